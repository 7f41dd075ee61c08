// Logical channels: a table of users over the physical channels.
#include "com_lch.h"

#include "com_driver.h"
#include "tt_assert.h"

com_lch_info_struct com_lch_info_g[COM_MAX_DOMAIN][COM_MAX_LCH];

namespace {

constexpr char unit[] = R"(ms_code\ps\sdi\conn\common\src\com_lch)";

com_lch_info_struct &slot(std::int32_t lch_domain_id, std::int32_t lch)
{
    tt_assert(lch_domain_id >= 0 && lch_domain_id < COM_MAX_DOMAIN, "lch_domain_id < COM_MAX_DOMAIN", unit, __LINE__);
    tt_assert(lch >= 0 && lch < COM_MAX_LCH, "(lch >= 0) && (lch < COM_MAX_LCH)", unit, __LINE__);
    return com_lch_info_g[lch_domain_id][lch];
}

com_lch_info_struct &valid_slot(std::int32_t lch_domain_id, std::int32_t lch)
{
    com_lch_info_struct &info = slot(lch_domain_id, lch);
    tt_assert(info.lch_valid == OSA_TRUE, "com_lch_info_g[lch_domain_id][lch].lch_valid == OSA_TRUE", unit, __LINE__);
    return info;
}

const com_driver_struct &driver_of(const com_pch_info_struct &pch)
{
    return com_driver_table[pch.attr.driver];
}

} // namespace

std::int32_t com_lch_add(std::int32_t lch_domain_id, std::int32_t lch, std::int32_t pch, std::uint32_t direction,
                         com_lch_callback callback, std::uint8_t *buffer)
{
    // The first test bounds the channels of all domains together, not those of one.
    tt_assert(com_info_g.no_lch < COM_MAX_LCH, "com_info_g.no_lch < COM_MAX_LCH", unit, __LINE__);
    tt_assert(lch < COM_MAX_LCH, "lch < COM_MAX_LCH", unit, __LINE__);
    if (lch >= 0) { // binding refuses a negative one
        com_lch_info_struct &info = slot(lch_domain_id, lch);
        info.buffer = buffer;
        info.callback = callback;
        info.lch_valid = OSA_TRUE;
        info.direction = direction;
    }
    com_pch_bind(pch, lch_domain_id, lch);
    return ++com_info_g.no_lch;
}

tt_bool com_lch_connect(std::int32_t lch_domain_id, std::int32_t lch)
{
    const com_pch_info_struct &pch = com_pch_info_g[valid_slot(lch_domain_id, lch).pch];
    return driver_of(pch).connect(pch.ch_desc);
}

std::uint32_t com_lch_write(std::int32_t lch_domain_id, std::int32_t lch, const std::uint8_t *data,
                            std::uint32_t length)
{
    return com_pch_write(slot(lch_domain_id, lch).pch, lch_domain_id, lch, data, length);
}

void com_lch_disconnect(std::int32_t lch_domain_id, std::int32_t lch)
{
    const com_pch_info_struct &pch = com_pch_info_g[slot(lch_domain_id, lch).pch];
    driver_of(pch).disconnect(pch.ch_desc);
}

std::int32_t com_lch_remove(std::int32_t lch_domain_id, std::int32_t lch)
{
    valid_slot(lch_domain_id, lch).lch_valid = 0;
    return --com_info_g.no_lch;
}

void com_lch_set_buffer(std::int32_t lch_domain_id, std::int32_t lch, std::uint8_t *buffer)
{
    com_lch_info_struct &info = slot(lch_domain_id, lch);
    if (info.lch_valid == OSA_TRUE)
        info.buffer = buffer;
}
