// Decode with release, and encode, of ten kinds of RRC messages beside their floor: a loop that takes as many fields
// of the same total width from a 64-bit window and stores each, and the zeroing of the record.
//
// Minima of alternating rounds in processor time.  Only the ratios of one run mean something.
#include <ctime>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "rrc_messages.h"

namespace {

constexpr std::size_t room = 1 << 16; // octets behind a frame, and of an encoding

double processor_ns()
{
    timespec now;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

/// What a message consists of.
struct contents {
    std::vector<std::uint8_t> frame; ///< with room behind it
    std::uint32_t             bits        = 0;
    std::uint32_t             fields      = 0; ///< values, selectors and counts
    std::uint32_t             elements    = 0;
    std::uint32_t             allocations = 0;
    std::uint32_t             string_octets = 0;
};

contents *counted = nullptr;

void *counting_alloc(std::size_t size, std::uint8_t, std::uint16_t, std::uint32_t)
{
    ++counted->allocations;
    counted->elements += size == sizeof(AsnListNode); // an element of that size would count as well: there is none
    return std::malloc(size);
}

void *counting_realloc(void *block, std::size_t size, std::size_t, std::uint8_t, std::uint16_t, std::uint32_t)
{
    ++counted->allocations;
    counted->string_octets += static_cast<std::uint32_t>(size);
    return std::realloc(block, size);
}

void counting_free(void *block, std::uint8_t, std::uint16_t, std::uint32_t)
{
    std::free(block);
}

/// Values in a printed text, names that select one (a name behind a name), and counts of lists.
std::uint32_t count_fields(const char *text)
{
    std::uint32_t fields     = 0;
    bool          after_name = false;
    for (const char *at = text; *at;) {
        const std::size_t length = std::strcspn(at, " ,\n");
        if (length == 0) {
            ++at;
            continue;
        }
        const std::string word(at, length);
        const bool        is_name = std::islower(static_cast<unsigned char>(word[0])) != 0;
        const bool        is_value = std::isdigit(static_cast<unsigned char>(word[0])) != 0 || word[0] == '\'' ||
                              (word[0] == '-' && word != "--") || word == "TRUE" || word == "FALSE";
        fields += is_value || word == "OF" || (is_name && after_name);
        after_name = is_name;
        at += length;
    }
    return fields;
}

contents examine(rrc_message &m)
{
    contents c;
    c.frame.resize(room * 2);
    const AsnErrorHandler sink = AsnSetErrorHandler([](const char *, int) {});
    for (int n = 0; n < 2; ++n) { // the first one brings what is below its bounds up to them
        pack_info_struct stream = {c.frame.data(), 0};
        m.pack(&stream, m.value.data());
        c.bits = stream.bits;
    }
    AsnSetErrorHandler(sink);
    c.frame.resize((c.bits + 7) / 8 + room);

    AsnTextBuf text;
    AsnTextBufInit(&text, 1 << 16);
    m.print(m.value.data(), &text, 0);
    c.fields = count_fields(text.text);
    AsnTextBufFree(&text);

    const dll_info_version_struct slots = dll_info_version;
    counted                             = &c;
    dll_info_version.alloc_clear        = counting_alloc;
    dll_info_version.realloc_clear      = counting_realloc;
    dll_info_version.free_tagged        = counting_free;
    std::vector<std::uint64_t> record(m.value.size());
    PerError                   error{};
    unpack_info_struct         in = {c.frame.data(), 0, static_cast<std::int32_t>((c.bits + 7) / 8), &error};
    m.unpack(record.data(), &in);
    m.free(record.data());
    dll_info_version = slots;
    if (error.code != 0 || in.bits != c.bits) {
        std::fprintf(stderr, "%s: error %u, %u of %u bits\n", m.name.c_str(), error.code, in.bits, c.bits);
        std::exit(1);
    }
    return c;
}

/// The floor's field widths: as many as there are fields, of the message's bits without those of strings.
std::vector<std::uint8_t> widths_of(const contents &c)
{
    std::vector<std::uint8_t> widths;
    const std::uint32_t       bits = c.bits - c.string_octets * 8;
    const auto              start_of = [&](std::uint32_t n) { return std::uint64_t{bits} * n / c.fields; };
    for (std::uint32_t n = 0; n < c.fields; ++n)
        widths.push_back(static_cast<std::uint8_t>(std::min<std::uint64_t>(start_of(n + 1) - start_of(n), 32)));
    return widths;
}

void read_floor(const contents &c, const std::vector<std::uint8_t> &widths, std::vector<std::uint64_t> &record,
                std::vector<std::uint32_t> &fields)
{
    std::memset(record.data(), 0, record.size() * sizeof record[0]);
    std::uint32_t at = 0;
    for (std::size_t n = 0; n < widths.size(); ++n) {
        const auto window = per_load<std::uint64_t>(c.frame.data() + (at >> 3));
        fields[n] = static_cast<std::uint32_t>(window << (at & 7) >> 1 >> (63 - widths[n]));
        at += widths[n];
    }
    asm volatile("" : : "r"(fields.data()), "r"(record.data()) : "memory");
}

template <typename Work> void keep_best(double &best, int times, Work work)
{
    const double start = processor_ns();
    for (int n = 0; n < times; ++n)
        work();
    best = std::min(best, (processor_ns() - start) / times);
}

void measure(rrc_message &m)
{
    const contents                  c      = examine(m);
    const std::vector<std::uint8_t> widths = widths_of(c);
    std::vector<std::uint32_t>      fields(widths.size() + 1);
    std::vector<std::uint64_t>      record(m.value.size());
    std::vector<std::uint8_t>       frame(c.frame.size());
    const auto                      octets = static_cast<std::int32_t>((c.bits + 7) / 8);
    const int                       times  = std::max(1, 60000 / static_cast<int>(c.fields * 6 + 60));
    double decode = std::numeric_limits<double>::max(), encode = decode, floor = decode;
    for (int round = 0; round < 300; ++round) {
        keep_best(decode, times, [&] {
            PerError           error{};
            unpack_info_struct in = {c.frame.data(), 0, octets, &error};
            std::memset(record.data(), 0, record.size() * sizeof record[0]);
            m.unpack(record.data(), &in);
            m.free(record.data());
        });
        keep_best(encode, times, [&] {
            pack_info_struct out = {frame.data(), 0};
            m.pack(&out, m.value.data());
        });
        keep_best(floor, times, [&] { read_floor(c, widths, record, fields); });
    }
    std::printf("%-34s %6d %6u %6u %6u %7u  %8.0f %8.0f %8.0f   %5.2f %5.2f  %7.2f\n", m.name.c_str(), octets, c.fields,
                c.elements, c.string_octets, c.allocations, decode, encode, floor, decode / floor, encode / floor,
                c.bits / decode);
}

/// A node and a small block, as every list element takes them.
void measure_blocks()
{
    double pair = std::numeric_limits<double>::max(), plain = pair;
    for (int round = 0; round < 300; ++round) {
        keep_best(pair, 5000, [] { AsnMemFree(AsnMemAlloc(24, 1, 2, 3), 1, 2, 3); });
        keep_best(plain, 5000, [] {
            void *block = std::calloc(1, 24);
            asm volatile("" : "+r"(block) : : "memory");
            std::free(block);
        });
    }
    std::printf("a block of 24 octets, allocated, zeroed and released: %.2f ns; calloc and free: %.2f ns\n", pair,
                plain);
}

} // namespace

/// Measures the messages whose names hold the first argument, or all.
int main(int argc, char **argv)
{
    const std::string wanted = argc > 1 ? argv[1] : "";

    std::printf("%-34s %6s %6s %6s %6s %7s  %8s %8s %8s   %5s %5s  %7s\n", "message", "octets", "fields", "elem.",
                "string", "allocs", "decode", "encode", "floor", "d/f", "e/f", "Gbit/s");
    for (rrc_message &m : rrc_messages()) {
        if (m.name.find(wanted) != std::string::npos)
            measure(m);
        m.free(m.value.data());
    }
    measure_blocks();
}
