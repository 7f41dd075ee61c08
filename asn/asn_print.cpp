// Decoded values as text.
#include "asn_print.h"

#include <cctype>
#include <cstring>

#include "asn_heap.h"
#include "tt_assert.h"

namespace {

constexpr std::size_t line_size = 512; // of the buffers that pieces of text are built in, terminator included

constexpr char digits[] = "0123456789abcdef";

// ` -- "` and `" -- ` around the characters of an octet string, whose digits stand between `'` and `'H`.
constexpr char text_opening[] = "'H -- \"";
constexpr char text_closing[] = "\" -- ";

template <typename Number> void put_number(AsnTextBuf *buffer, const char *format, Number number)
{
    char text[line_size];
    dll_info_version.sprintf(text, format, number);
    AsnTextBufPut(buffer, text);
}

void resize(AsnTextBuf *buffer, std::uint32_t capacity)
{
    buffer->text =
        static_cast<char *>(dll_info_version.realloc(buffer->text, capacity, buffer->capacity, 0, 0, 0));
    buffer->capacity = capacity;
}

std::uint32_t octets_of(const AsnBits *bits)
{
    return (bits->bitLen >> 3) + ((bits->bitLen & 7) != 0);
}

// A subidentifier and its octets.  The octet that ends the string ends it, whatever its top bit.
unsigned long take_subidentifier(const std::uint8_t *&octets, const std::uint8_t *end)
{
    unsigned long value = 0;
    while (octets != end) {
        const std::uint8_t octet = *octets++;
        value                    = value << 7 | (octet & 0x7F);
        if ((octet & 0x80) == 0)
            break;
    }
    return value;
}

} // namespace

int AsnTextBufInit(AsnTextBuf *buffer, std::uint32_t capacity)
{
    *buffer = {nullptr, capacity, capacity, 0};
    if (capacity > 0)
        buffer->text = static_cast<char *>(AsnMemAlloc(capacity)); // comes zeroed: the terminator is there
    return buffer->text != nullptr;
}

// The terminator always fits: the text grows as soon as its length reaches the capacity.
void AsnTextBufPut(AsnTextBuf *buffer, const char *text)
{
    if (!buffer->text || !text)
        return;
    const auto          more     = static_cast<std::uint32_t>(std::strlen(text));
    const std::uint32_t length   = buffer->length + more;
    std::uint32_t       capacity = buffer->capacity;
    while (capacity <= length && buffer->step != 0)
        capacity += buffer->step;
    if (capacity != buffer->capacity)
        resize(buffer, capacity);
    std::memcpy(buffer->text + buffer->length, text, more + std::size_t{1});
    buffer->length = length;
}

void AsnTextBufReset(AsnTextBuf *buffer)
{
    buffer->length = 0;
    if (!buffer->text)
        return;
    if (static_cast<std::int32_t>(buffer->capacity) > static_cast<std::int32_t>(buffer->step))
        resize(buffer, buffer->step);
    buffer->text[0] = 0;
}

void AsnTextBufFree(AsnTextBuf *buffer)
{
    AsnMemFree(buffer->text);
}

void AsnIndent(AsnTextBuf *buffer, std::uint16_t count)
{
    char blanks[line_size];
    tt_assert(count < sizeof blanks, "count < sizeof blanks", "asn_print", __LINE__);
    std::memset(blanks, ' ', count);
    blanks[count] = 0;
    AsnTextBufPut(buffer, blanks);
}

void AsnBool_print(const AsnBool *value, AsnTextBuf *buffer, std::uint16_t /*indent*/)
{
    AsnTextBufPut(buffer, *value ? "TRUE" : "FALSE");
}

void AsnEnum_print(const std::int32_t *value, AsnTextBuf *buffer, std::uint16_t /*indent*/)
{
    put_number(buffer, "%d", static_cast<int>(*value));
}

void AsnInt_print(const AsnInt *value, AsnTextBuf *buffer, std::uint16_t /*indent*/)
{
    put_number(buffer, "%d", static_cast<int>(*value));
}

void UAsnInt_print(const UAsnInt *value, AsnTextBuf *buffer, std::uint16_t /*indent*/)
{
    put_number(buffer, "%u", static_cast<unsigned int>(*value));
}

void AsnNull_print(const AsnNull * /*value*/, AsnTextBuf *buffer, std::uint16_t /*indent*/)
{
    AsnTextBufPut(buffer, "NULL");
}

// Without the apostrophe that the notation opens a string with: readers of these texts know it so.
void AsnBits_print(const AsnBits *value, AsnTextBuf *buffer, std::uint16_t /*indent*/)
{
    put_number(buffer, "%x' Hex", static_cast<unsigned int>(AsnBits_toWord(value)));
}

void AsnOcts_print(const AsnOcts *value, AsnTextBuf *buffer, std::uint16_t /*indent*/)
{
    char        text[line_size];
    const auto  length = std::size_t{value->octetLen};
    const auto  fixed  = 1 + sizeof text_opening - 1 + sizeof text_closing - 1;
    char       *at     = text;
    tt_assert(length < sizeof text && fixed + 3 * length < sizeof text, "fixed + 3 * length < sizeof text",
              "asn_print", __LINE__);
    *at++ = '\'';
    for (std::size_t n = 0; n < length; ++n) {
        *at++ = digits[value->octs[n] >> 4];
        *at++ = digits[value->octs[n] & 15];
    }
    at = static_cast<char *>(std::memcpy(at, text_opening, sizeof text_opening - 1)) + sizeof text_opening - 1;
    for (std::size_t n = 0; n < length; ++n)
        *at++ = std::isprint(value->octs[n]) ? static_cast<char>(value->octs[n]) : '.';
    std::memcpy(at, text_closing, sizeof text_closing);
    AsnTextBufPut(buffer, text);
}

// X.690 (2015) 8.19.  The first subidentifier holds two arcs, the first of which is at most 2.
void AsnOid_print(const AsnOid *value, AsnTextBuf *buffer, std::uint16_t /*indent*/)
{
    AsnTextBufPut(buffer, "{");
    if (value->octetLen > 0) {
        const std::uint8_t       *at    = value->octs;
        const std::uint8_t *const end   = at + value->octetLen;
        const unsigned long       both  = take_subidentifier(at, end);
        const unsigned long       first = both / 40 < 2 ? both / 40 : 2;
        put_number(buffer, "%ld ", static_cast<long>(first));
        put_number(buffer, "%ld", static_cast<long>(both - first * 40));
        while (at != end)
            put_number(buffer, " %ld", static_cast<long>(take_subidentifier(at, end)));
    }
    AsnTextBufPut(buffer, "}");
}

void AsnReal_print(const double *value, AsnTextBuf *buffer, std::uint16_t /*indent*/)
{
    put_number(buffer, "%.17E", *value);
}

void AsnAny_print(const AsnAny *value, AsnTextBuf *buffer, std::uint16_t /*indent*/)
{
    if (value->ai && value->ai->Print)
        value->ai->Print(buffer, value->value);
    else
        AsnTextBufPut(buffer, " -- ERROR: malformed ANY value --");
}

std::uint32_t AsnBits_toWord(const AsnBits *bits)
{
    const std::uint32_t octets = octets_of(bits);
    if (octets == 0)
        return 0;
    const std::uint32_t unused = octets * 8 - bits->bitLen;
    std::uint32_t       word   = 0;
    for (std::uint32_t n = 0; n + 1 < octets; ++n)
        word = word << 8 | bits->bits[n];
    return word << (8 - unused) | std::uint32_t{bits->bits[octets - 1]} >> unused;
}

void AsnBits_fromWord(AsnBits *bits, std::uint32_t value)
{
    const std::uint32_t octets = octets_of(bits);
    const std::uint32_t unused = octets * 8 - bits->bitLen;
    std::uint64_t       left   = std::uint64_t{value} << unused;
    for (std::uint32_t n = octets; n > 0; --n, left >>= 8)
        bits->bits[n - 1] = static_cast<std::uint8_t>(left);
}

void AsnPrintSequence(AsnTextBuf *buffer)
{
    AsnTextBufPut(buffer, "{ -- SEQUENCE --\n");
}

void AsnPrintList(AsnTextBuf *buffer)
{
    AsnTextBufPut(buffer, "{ -- SEQUENCE OF -- \n");
}

void AsnPrintFirst(AsnTextBuf *buffer, std::uint16_t indent, const char *name)
{
    AsnIndent(buffer, static_cast<std::uint16_t>(indent + ASN_INDENT_STEP));
    AsnTextBufPut(buffer, name);
}

void AsnPrintNext(AsnTextBuf *buffer, std::uint16_t indent, const char *name)
{
    AsnTextBufPut(buffer, ",\n");
    AsnPrintFirst(buffer, indent, name);
}

void AsnPrintMaybeFirst(AsnTextBuf *buffer, std::uint16_t indent, const char *name, bool *first)
{
    if (!*first)
        AsnTextBufPut(buffer, ",\n");
    *first = false;
    AsnPrintFirst(buffer, indent, name);
}

void AsnPrintEnd(AsnTextBuf *buffer, std::uint16_t indent)
{
    AsnTextBufPut(buffer, "\n");
    AsnIndent(buffer, indent);
    AsnTextBufPut(buffer, "}");
}
