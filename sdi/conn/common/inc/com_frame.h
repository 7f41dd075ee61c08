// Framing on a channel: octets between two 0x7E, in which 0x7D and 0x7E are sent as 0x7D and the octet XOR 0x20.
// There is no header, no length and no checksum.
#pragma once

#include <cstdint>

inline constexpr std::uint32_t COM_PACH_CODE_BUFF_SIZE_MAX = 16384;
inline constexpr std::uint32_t COM_READ_SIZE = 64000; ///< octets asked for in one read of a transport

/// Frames `length` octets into a block of its own, which the caller frees with std::free.  1, or 0 with the
/// outputs unset when there is no memory.
int EncodeData(const std::uint8_t *payload, std::uint32_t length, std::uint8_t **out, std::uint32_t *out_length);

/// Takes the first frame out of `length` octets.
///   out         the payload, in one static buffer that the next call overwrites; null when there is none
///   out_length  its octets
///   answer      true when the frame is complete: false asks for the next chunk, which goes on where this ends
/// Fewer than four octets, and a payload of more than 65536, are a complete frame with no data.  Octets behind
/// the closing delimiter are not looked at.  An escape as the last octet of a chunk takes in the octet behind it:
/// the caller owes one more readable octet when `length` is below COM_READ_SIZE; in a chunk of that size it counts
/// as 0.  Not for two threads at once.
bool DecodeData(const std::uint8_t *input, std::uint32_t length, std::uint8_t **out, std::uint32_t *out_length);
