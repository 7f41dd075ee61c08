// Records, enumerations, typedefs and constants as C++.
#pragma once

#include <string>

#include "model/model.h"

namespace solvane::gen {

/// Name under which the generated code knows an enumeration: its tag or, without one, its typedef.
std::string enum_name(const model &m, std::uint32_t enum_id);

/// Name of a record, typedef or member in the generated code.
std::string record_name(const model &m, std::uint32_t record_id);
std::string alias_name(const model &m, std::uint32_t alias_id);
std::string member_name(const model &m, std::uint32_t record_id, std::uint32_t member);

/// True for a typedef that the generated code has: not the one that names an anonymous enumeration and, of a list
/// family, the list type alone.
bool has_typedef(const model &m, std::uint32_t alias_id);

/// What stands behind all typedefs of a use.
type_use base_of(const model &m, type_use use);

/// Blocks that declare one definition, a line feed at the end of each.
void put_enumeration(std::string &out, const model &m, std::uint32_t enum_id);
void put_record(std::string &out, const model &m, std::uint32_t record_id);
void put_typedef(std::string &out, const model &m, std::uint32_t alias_id);
void put_forward(std::string &out, const model &m, std::uint32_t record_id);

} // namespace solvane::gen
