#include "model/wire.h"

namespace solvane::gen {

std::string wire_function(const std::string &record, const char *operation)
{
    constexpr std::string_view ending = "_struct";
    std::string                stem = record;
    if (stem.size() > ending.size() && stem.ends_with(ending))
        stem.resize(stem.size() - ending.size());
    return stem + "_" + operation;
}

} // namespace solvane::gen
