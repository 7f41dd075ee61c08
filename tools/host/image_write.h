// A structure's memory from named values: the inverse of `read_value`, for the encoders.
//
// The values are JSON in the form that `json_value` prints.  What follows from the rest may be left out: a count from
// the length of what it counts, a presence flag from the presence of its member, a selector from the name of the case.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "dictionary.h"
#include "json_out.h"

namespace solvane::tools {

/// Zeroed memory for what the pointers of a value lead to.  It lives as long as this object.
class block_store {
public:
    std::span<std::uint8_t> take(std::uint64_t size);

private:
    std::vector<std::unique_ptr<std::uint64_t[]>> blocks_;
};

/// Writes `value` as a value of type `use` into `at`, which is zeroed and as large as the type.  Members that are not
/// named stay 0.  Throws `failure` (exit_usage) with the path of the member that does not fit its type.
void write_value(const domain &in, const type_use &use, const json &value, std::span<std::uint8_t> at,
                 block_store &blocks);

} // namespace solvane::tools
