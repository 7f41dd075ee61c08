// The TCP transport: one connection between host and target, as server or as client, over IPv4.
//
// Messages go to standard output.  Read and write take no lock; connecting takes the channel's, also while it waits
// in accept.
#pragma once

#include <atomic>
#include <cstdint>

#include "solvane/solvane.h"

struct pf_mutex;

inline constexpr std::int32_t COM_TCP_MAX_CHANNELS = 8;
inline constexpr std::int32_t COM_TCP_MAX_CLIENTS = 4; ///< that a server serves

struct com_tcp_channel {
    const com_pch_attr       *ch_attr_p;      ///< null when the record is free
    int                       socket;         ///< listening, or the only one of a client; -1: none
    std::atomic<int>          client_socket[COM_TCP_MAX_CLIENTS]; ///< connected ones; -1: none
    std::atomic<std::int32_t> connected_num;  ///< entries in use; a server with one client counts calls
    std::atomic<std::int32_t> transfers;      ///< under way; a disconnect waits for their end
    pf_mutex                 *mutex;          ///< guards connecting
    tt_bool                   connect_failed; ///< a client tries once
};

extern com_tcp_channel com_tcp_channels_g[COM_TCP_MAX_CHANNELS];

/// Frees all records and fills the transport's row of the driver table.
void com_tcp_init();

/// Clients that a server channel serves, 1 to 4.  Asked for once, of `com_tcp_setting`.
std::int32_t com_tcp_client_num();

/// Where the number of clients comes from: nowhere, so that it is 1.  Tests put another source here.
extern const char *(*com_tcp_setting)();

std::int32_t com_tcp_open(const com_pch_attr *attr);
tt_bool      com_tcp_connect(std::int32_t ch_desc);
void         com_tcp_disconnect(std::int32_t ch_desc);
std::int32_t com_tcp_read(std::int32_t ch_desc, std::uint8_t *buffer, std::uint32_t read_len);
std::int32_t com_tcp_write(std::int32_t ch_desc, const std::uint8_t *data, std::uint32_t write_len);
void         com_tcp_close(std::int32_t ch_desc);
