// What a transport offers to the channels, and what it may expect of them.
#pragma once

#include <cstdint>

#include "solvane/solvane.h"

inline constexpr std::uint32_t COM_MAX_DRIVER = 4;

/// A transport.  A descriptor is what `open` answered; the attributes stay in place until `close`.
struct com_driver_struct {
    std::int32_t (*open)(const com_pch_attr *attr);    ///< descriptor, or -1
    tt_bool (*connect)(std::int32_t desc);             ///< waits for the connection or makes it
    void (*disconnect)(std::int32_t desc);             ///< drops the connection
    std::int32_t (*read)(std::int32_t desc, std::uint8_t *buffer, std::uint32_t size); ///< octets of one read;
                                                                                       ///< 0: nothing, or closed
    std::int32_t (*write)(std::int32_t desc, const std::uint8_t *data, std::uint32_t size); ///< size, or -1
    void (*close)(std::int32_t desc);                  ///< frees the descriptor
};

/// Rows by com_driver_row.  A transport fills its own row during com_init; the others stay empty.
extern com_driver_struct com_driver_table[COM_MAX_DRIVER];

enum com_error_code {
    COM_ERROR_MUTEX = 0,       ///< a mutex could not be created
    COM_ERROR_NO_CHANNEL = 1,  ///< no free channel
    COM_ERROR_TOO_MANY_LCH = 2,///< too many logical channels on a physical one
    COM_ERROR_DIRECTION = 5,   ///< directions do not fit, or nothing receives
    COM_ERROR_SOCKET = 7,      ///< a socket could not be set up
    COM_ERROR_TRANSFER = 9     ///< a read or write on a socket failed
};

/// The one failure path of the channels: ends the process by abort, but for COM_ERROR_TRANSFER as long as the
/// transport serves a client.
void com_error(com_error_code code);
