// Physical channels of a build with no transport.
#include "com_pch.h"

void com_init() {}

std::int32_t com_pch_add(const com_pch_attr *)
{
    return -1;
}

void com_pch_start(std::int32_t, std::uint32_t, std::uint32_t, std::uint32_t) {}

void com_pch_stop(std::int32_t) {}

void com_pch_remove(std::int32_t) {}
