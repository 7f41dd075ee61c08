// Names of a folder of definitions and what they stand for, as the checker sees them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/diagnostics.h"
#include "def/folder.h"

namespace solvane::gen::def {

/// A type by its name.
struct type_symbol {
    type_use      use;
    std::uint32_t unit = 0;
    place         where;
    bool          defined = false;  ///< the walk over the definitions has passed it
};

/// A literal or a constant.
struct value_symbol {
    std::uint32_t unit = 0;
    std::int64_t  number = 0;
    bool          evaluated = true;
    place         where;
};

/// What a typedef stands for.
struct alias_facts {
    type_use               base;
    std::vector<dimension> dims;
};

struct scope {
    diagnostics &diag;
    folder_def  &folder;

    std::vector<std::vector<bool>> visible;  ///< [unit][other]: the other one is imported, perhaps through a third

    std::unordered_map<std::string, type_symbol>       types;
    std::unordered_multimap<std::string, value_symbol> values;

    std::vector<const record_def *> records;  ///< by record id
    std::vector<alias_facts>        aliases;  ///< by alias id
    std::uint32_t                   no_enums = 0, no_lists = 0, no_constants = 0;
};

/// A type with its typedefs looked through.
struct resolved_type {
    type_use use;
    bool     plain = true;  ///< no pointer or array on the way
};

resolved_type look_through(const scope &s, type_use use);

/// A defined type that unit `unit` sees; null and a message where there is none.  Of a structure that stands only
/// behind a pointer (`behind_pointer`) the definition may come later in the unit.
const type_symbol *find_type(scope &s, const unit_def &unit, const name &id, bool behind_pointer);

/// The value of an expression that sees the literals and constants of `units`; nothing, and a message, where it
/// has none between `low` and `high`.  `what` names the value in the message.
std::optional<std::int64_t> evaluate(scope &s, const expression &e, const std::vector<bool> &units, std::int64_t low,
                                     std::int64_t high, std::string_view what);

/// A word that is no name in C++20.
bool is_cpp_word(std::string_view word);

/// Reports a name that the generated C++ could not use.
void check_word(scope &s, const name &id);

/// The octets of an integer kind; 0 for any other kind.
std::uint32_t integer_size(kind base);

} // namespace solvane::gen::def
