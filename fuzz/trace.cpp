// Any format with any arguments, in both layouts.
//
// Input: length of the format in one octet, twice it in characters at most; the format; the rest is the trace,
// whose id is set to the format's.  An assertion ends the case: a line or conversion text may well be too long.
#include <algorithm>
#include <csetjmp>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "tsc_decode.h"
#include "tt_assert.h"

namespace {

std::jmp_buf end_of_case;

constexpr std::uint32_t format_id = 1;

/// Decodes from a block that ends where the trace ends.
void decode(const tsc_table &table, const std::vector<std::uint8_t> &trace, bool integers)
{
    if (setjmp(end_of_case) != 0)
        return;
    tsc_trace_info    info;
    const auto        length = static_cast<std::uint32_t>(trace.size());
    const char *const line = integers ? tsc_decode_integer_layout(table, trace.data(), length, &info)
                                      : tsc_decode_string_layout(table, trace.data(), &info);
    if (std::strlen(line) >= TSC_LINE_SIZE + 64)
        std::abort();
}

std::vector<std::uint8_t> string_trace(const std::uint8_t *arguments, std::size_t size)
{
    std::vector<std::uint8_t> trace = {0, 0, 0, format_id, 0, 0, static_cast<std::uint8_t>(size >> 8),
                                       static_cast<std::uint8_t>(size)};
    trace.insert(trace.end(), arguments, arguments + size);
    trace.shrink_to_fit();
    return trace;
}

std::vector<std::uint8_t> integer_trace(const std::uint8_t *arguments, std::size_t size)
{
    std::vector<std::uint8_t> trace(4 + size);
    std::memcpy(trace.data(), &format_id, sizeof format_id);
    std::copy_n(arguments, size, trace.begin() + 4);
    return trace;
}

} // namespace

void tt_assert_failed(const char *, const char *, int)
{
    std::longjmp(end_of_case, 1);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::size_t format_size = std::min<std::size_t>(data[0] * 2u, size - 1);
    const std::string format(reinterpret_cast<const char *>(data + 1), format_size);
    const std::size_t rest = std::min<std::size_t>(size - 1 - format_size, 0xFFFF);

    const tsc_db_item_struct items[] = {{0, "", TSC_DIS_HEAD, "", 0},
                                        {format_id, format.c_str(), TSC_DIS_ARGS, "unit.c", 1},
                                        {UINT32_C(0xFFFFFFFF), "", TSC_DIS_LAST, "", 0}};
    const tsc_db_mod_struct  module = {0, "::SYSTEM", 1};
    const std::uint32_t      first_item = 0;
    const tsc_db_info_struct db_info = {"tsc_db", items, 3, &module, 1};
    const tsc_table          table = {&db_info, &first_item};
    decode(table, string_trace(data + 1 + format_size, rest), false);
    decode(table, integer_trace(data + 1 + format_size, rest), true);
    return 0;
}
