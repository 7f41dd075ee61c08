// Logical channels of a build with no transport.
#include "com_lch.h"

std::int32_t com_lch_add(std::int32_t, std::int32_t, std::int32_t, std::uint32_t, com_lch_callback, std::uint8_t *)
{
    return 0;
}

tt_bool com_lch_connect(std::int32_t, std::int32_t)
{
    return 0;
}

std::uint32_t com_lch_write(std::int32_t, std::int32_t, const std::uint8_t *, std::uint32_t length)
{
    return length;
}

void com_lch_disconnect(std::int32_t, std::int32_t) {}

std::int32_t com_lch_remove(std::int32_t, std::int32_t)
{
    return 0;
}
