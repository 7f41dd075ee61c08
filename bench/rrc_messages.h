// Messages for measuring the RRC codecs: ten kinds, of the size and shape of everyday ones, filled in by us.
//
// What stands at its lowest value is left zero: the first encoding brings such fields within their bounds.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "asn_print.h"
#include "per_codec.h"

/// A kind of message: its functions, and a value.
struct rrc_message {
    std::string name;
    std::size_t record_size = 0;

    void (*unpack)(void *value, unpack_info_struct *stream)                       = nullptr;
    void (*pack)(pack_info_struct *stream, void *value)                           = nullptr;
    void (*free)(void *value)                                                     = nullptr;
    int (*print)(void *value, AsnTextBuf *buffer, std::uint16_t indent)           = nullptr;

    std::vector<std::uint64_t> value; ///< the record
};

/// The ten kinds, their contents allocated; in the order of their names in the table of results.
std::vector<rrc_message> rrc_messages();
