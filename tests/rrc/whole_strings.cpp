// Strings in print texts with all of their octets, in place of the run-time's own form: that form keeps 32 bits of a
// bit string and ends the process at an octet string of more than 166 octets.
//
// Takes the place of both functions by the linker's --wrap: 'a1f0'H, and 'a1f0'B12 with the length in bits.
#include <cstdio>
#include <string>

#include "asn_print.h"

namespace {

void put_octets(AsnTextBuf *buffer, const std::uint8_t *octets, std::uint32_t count, const std::string &end)
{
    std::string text = "'";
    for (std::uint32_t n = 0; n < count; ++n) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", octets[n]);
        text += digits;
    }
    AsnTextBufPut(buffer, (text + end).c_str());
}

} // namespace

extern "C" void __wrap__Z13AsnOcts_printPK7AsnOctsP10AsnTextBuft(const AsnOcts *value, AsnTextBuf *buffer,
                                                                 std::uint16_t)
{
    put_octets(buffer, value->octs, value->octetLen, "'H");
}

extern "C" void __wrap__Z13AsnBits_printPK7AsnBitsP10AsnTextBuft(const AsnBits *value, AsnTextBuf *buffer,
                                                                 std::uint16_t)
{
    put_octets(buffer, value->bits, (value->bitLen + 7) / 8, "'B" + std::to_string(value->bitLen));
}
