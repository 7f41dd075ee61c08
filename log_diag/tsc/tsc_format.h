// One word of a trace through the conversion text that a format holds for it.
//
// A conversion text comes from a table and its word from a target, and neither is believed: the C library's
// formatter never gets to see the text as it stands.
#pragma once

#include <cstdint>
#include <string_view>

/// Characters of the longest conversion text, and of the longest result: a longer one keeps its first ones.
inline constexpr std::uint32_t TSC_CONVERSION_MAX = 128;
inline constexpr std::uint32_t TSC_RESULT_MAX = 128;

/// Formats a word as printf does where `int` and `long` are 32 bits wide.              ISO/IEC 9899:2011 7.21.6.1
///   out         room for TSC_RESULT_MAX characters; no terminating zero is written
///   conversion  `%`, what follows it, and one of the letters C X c d i o p u x; at most TSC_CONVERSION_MAX
///   answer      characters written; those in front of the first zero, where a result holds one
/// A length that asks for more than a word (ll, j, q, L) is given the word.  Where the letter at the end is not
/// what ends the conversion for printf, as in `%s of %d`, the first conversion in the text takes the word and the
/// rest is copied: an address or floating-point number (and n) shows as `%#x` shows the word, and what is no
/// conversion at all is copied with its `%`.
std::uint32_t tsc_format_word(char *out, std::string_view conversion, std::uint32_t word);
