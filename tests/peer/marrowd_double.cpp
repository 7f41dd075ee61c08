// Stands in for the closed library marrowd: each function notes its own name.
#include "marrowd.h"

const char *marrowd_called;

extern "C" {
#define DEFINE(row, octets, stem)                                                                                    \
    void encode_##stem(const void *, std::uint8_t *, std::uint32_t *bits, std::uint32_t *)                           \
    {                                                                                                                \
        marrowd_called = "encode_" #stem;                                                                            \
        *bits          = 8;                                                                                          \
    }                                                                                                                \
    void decode_##stem(void *, const std::uint8_t *, std::uint32_t *bits, std::uint32_t *)                           \
    {                                                                                                                \
        marrowd_called = "decode_" #stem;                                                                            \
        *bits          = 8;                                                                                          \
    }
MARROWD_ASN_MESSAGES(DEFINE)
#undef DEFINE

#define DEFINE(row, octets, stem)                                                                                    \
    void stem##_encode(const void *, std::uint8_t *, std::uint32_t *size)                                            \
    {                                                                                                                \
        marrowd_called = #stem "_encode";                                                                            \
        *size          = 1;                                                                                          \
    }                                                                                                                \
    std::int32_t stem##_decode(void *, const std::uint8_t *, std::uint32_t *size)                                    \
    {                                                                                                                \
        marrowd_called = #stem "_decode";                                                                            \
        *size          = 1;                                                                                          \
        return 0;                                                                                                    \
    }
MARROWD_NAS_MESSAGES(DEFINE)
#undef DEFINE
}
