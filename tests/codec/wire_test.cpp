// Emitted codecs at work: octets in, members, the same octets out; cut short, repeated, out of order, too long.
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "wire_cases_def_codec.h"

namespace {

using octets = std::vector<std::uint8_t>;

octets from_hex(const std::string &text)
{
    octets out;
    std::string digits = text;
    std::erase(digits, ' ');
    for (std::size_t n = 0; n < digits.size(); n += 2)
        out.push_back(static_cast<std::uint8_t>(std::stoul(digits.substr(n, 2), nullptr, 16)));
    return out;
}

std::string to_hex(const octets &value)
{
    std::string out;
    for (const std::uint8_t octet : value) {
        out += "0123456789abcdef"[octet >> 4];
        out += "0123456789abcdef"[octet & 15];
    }
    return out;
}

/// One structure's functions, whatever its type.
struct codec {
    const char *name;
    std::size_t size;
    void (*pack)(pack_info_struct *, const void *);
    void (*unpack)(void *, unpack_info_struct *);
    void (*release)(void *);
};

template <typename T> void no_release(T *) {}

template <typename T, void (*Pack)(pack_info_struct *, const T *), void (*Unpack)(T *, unpack_info_struct *),
          void (*Release)(T *) = no_release<T>>
constexpr codec codec_of(const char *name)
{
    return {name, sizeof(T), [](pack_info_struct *s, const void *v) { Pack(s, static_cast<const T *>(v)); },
            [](void *v, unpack_info_struct *s) { Unpack(static_cast<T *>(v), s); },
            [](void *v) { Release(static_cast<T *>(v)); }};
}

constexpr codec plmn = codec_of<plmn_struct, plmn_pack, plmn_unpack>("plmn");
constexpr codec identity = codec_of<identity_struct, identity_pack, identity_unpack, identity_release>("identity");
constexpr codec cause = codec_of<cause_struct, cause_pack, cause_unpack, cause_release>("cause");
constexpr codec number = codec_of<number_struct, number_pack, number_unpack>("number");
constexpr codec items = codec_of<items_struct, items_pack, items_unpack, items_release>("items");
constexpr codec chain = codec_of<chain_struct, chain_pack, chain_unpack, chain_release>("chain");
constexpr codec counted = codec_of<counted_struct, counted_pack, counted_unpack, counted_release>("counted");
constexpr codec cut = codec_of<cut_struct, cut_pack, cut_unpack>("cut");
constexpr codec rest_octets = codec_of<rest_octets_struct, rest_octets_pack, rest_octets_unpack>("rest_octets");
constexpr codec request = codec_of<request_struct, request_pack, request_unpack, request_release>("request");
constexpr codec accept_message = codec_of<accept_struct, accept_pack, accept_unpack, accept_release>("accept");

struct round_trip {
    const codec *of;
    const char  *subject;
    const char  *message;
    const char  *again; ///< null: the same
};

const round_trip round_trips[] = {
    {&plmn, "digits in their order of the air", "62f210", nullptr},
    {&identity, "fifteen digits behind a half octet", "082926102143658709", nullptr},
    {&identity, "even digits end in a filler", "0321 26f7", nullptr},
    {&identity, "other member of the union", "05f401020304", nullptr},
    {&identity, "characters to the end", "0405616263", nullptr},
    {&identity, "no member for that type", "0302aabb", nullptr},
    {&identity, "octets of a later release", "07f401020304aabb", nullptr},
    {&identity, "nothing inside", "00", nullptr},
    {&cause, "octet 3a is absent", "02e090", nullptr},
    {&cause, "octet 3a", "03608190", nullptr},
    {&cause, "octets to the end", "04e090aabb", nullptr},
    {&number, "odd digits", "04912143f5", nullptr},
    {&number, "more digits than there is room for", "059121436587", "0491214365"},
    {&items, "elements of varying size", "0009 000102aabb 000201cc", nullptr},
    {&items, "none", "0000", nullptr},
    {&items, "one that does not fit is left to the rest", "0009 000101aa 000204aabb", nullptr},
    {&items, "one whose head does not fit", "0006 000101aa 0002", nullptr},
    {&chain, "no chain", "0185", nullptr},
    {&chain, "a chain of two", "03050283", nullptr},
    {&chain, "a chain and octets behind it", "040502 83ee", nullptr},
    {&chain, "a chain longer than its room", "060501010101 81", "0605010101 8181"},
    {&counted, "counts on the wire", "01010203040161", nullptr},
    {&counted, "more than there is room for", "040001000200030004000500", "0200010002000300"},
    {&cut, "whole", "03b00880", nullptr},
    {&cut, "cut behind the first field", "01b0", nullptr},
    {&cut, "filled up", "0440000000", nullptr},
    {&rest_octets, "L and L", "00", nullptr},
    {&rest_octets, "H and H", "da", nullptr},
    {&rest_octets, "L and H", "68", nullptr},
    {&request, "half octets, lengths of 16 bits, fixed octets", "150821 62f2101234 0002aabb 01020304 026162", nullptr},
    {&request, "octets beyond the room", "150821 62f2101234 0000 01020304 056162636465",
     "150821 62f2101234 0000 01020304 0461626364"},
    {&accept_message, "nothing optional", "850221", nullptr},
    {&accept_message, "everything",
     "850221 1705f401020304 4a0a62f210123462f2105678 a1 350121 350122 83 19abcd 7b0002eeff", nullptr},
    {&accept_message, "the second of two with one identifier", "850221 350121 350122", nullptr},
};

/// A structure in memory of its own size, so that a sanitizer sees what is written beside it.
struct memory {
    const codec &of;
    octets       bytes;

    explicit memory(const codec &c) : of(c), bytes(c.size) {}
    ~memory() { of.release(bytes.data()); }
    memory(const memory &) = delete;
    memory &operator=(const memory &) = delete;
    template <typename T> T &as() { return *reinterpret_cast<T *>(bytes.data()); }
};

struct reading {
    std::uint32_t bits;
    std::int32_t  fr_size;
    std::uint32_t must_understand;
    std::ptrdiff_t frame;
};

/// Unpacks `message`; `behind` octets of zero stand behind it, for reads of the fixed part.
reading unpack(memory &to, const octets &message, std::size_t behind)
{
    octets frame = message;
    frame.resize(message.size() + behind);
    PerError           error = {};
    unpack_info_struct stream = {frame.data(), 0, static_cast<std::int32_t>(message.size()), &error};
    to.of.unpack(to.bytes.data(), &stream);
    EXPECT_EQ(error.code, 0u);
    EXPECT_EQ(stream.err_hndl, &error);
    return {stream.bits, stream.fr_size, error.must_understand, stream.frame - frame.data()};
}

octets pack(const memory &from)
{
    constexpr std::uint8_t guard = 0xA5;
    constexpr std::size_t  trimmed = 8; // a content is written whole before it is cut
    octets                 frame(2000, guard);
    pack_info_struct       stream = {frame.data(), 0};
    from.of.pack(&stream, from.bytes.data());
    const std::size_t used = (stream.bits + 7) / 8;
    EXPECT_EQ(frame[used + trimmed], guard);
    frame.resize(used);
    if (stream.bits % 8 != 0) // what the last octet held before stays
        frame.back() = static_cast<std::uint8_t>(frame.back() & ~((1u << (8 - stream.bits % 8)) - 1));
    return frame;
}

TEST(wire, comes_back_as_it_was)
{
    for (const round_trip &c : round_trips) {
        SCOPED_TRACE(std::string(c.of->name) + ": " + c.subject);
        memory       value(*c.of);
        const octets message = from_hex(c.message);
        unpack(value, message, 1);
        EXPECT_EQ(to_hex(pack(value)), to_hex(from_hex(c.again != nullptr ? c.again : c.message)));
    }
}

/// A second message in the same memory leaves nothing of the first one.
TEST(wire, is_read_into_used_memory)
{
    for (const round_trip &first : round_trips) {
        for (const round_trip &c : round_trips) {
            if (c.of != first.of || c.again != nullptr)
                continue;
            SCOPED_TRACE(std::string(c.of->name) + ": " + first.subject + ", " + c.subject);
            memory value(*c.of);
            unpack(value, from_hex(first.message), 1);
            unpack(value, from_hex(c.message), 1);
            EXPECT_EQ(to_hex(pack(value)), to_hex(from_hex(c.message)));
        }
    }
}

/// Of every message each shorter cut: it ends, and reads no further than a fixed part behind the cut.
TEST(wire, ends_when_cut_short)
{
    for (const round_trip &c : round_trips) {
        const octets whole = from_hex(c.message);
        for (std::size_t length = 0; length < whole.size(); ++length) {
            SCOPED_TRACE(std::string(c.of->name) + ": " + c.subject + " cut to " + std::to_string(length));
            memory value(*c.of);
            unpack(value, octets(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)), 18);
            pack(value);
        }
    }
}

TEST(wire, members_hold_what_the_octets_say)
{
    memory id(identity);
    unpack(id, from_hex("082926102143658709"), 0);
    const identity_struct &imsi = id.as<identity_struct>();
    EXPECT_EQ(imsi.type, 1);
    EXPECT_EQ(imsi.id.imsi.no_digits, 15);
    EXPECT_EQ(to_hex(octets(imsi.id.imsi.digits, imsi.id.imsi.digits + 15)), "020602000101020304050607080900");

    memory chained(chain);
    unpack(chained, from_hex("03050283"), 0);
    EXPECT_EQ(chained.as<chain_struct>().no_versions, 2);
    EXPECT_EQ(chained.as<chain_struct>().versions[1], 3);

    memory octet_3a(cause);
    unpack(octet_3a, from_hex("03608190"), 0);
    EXPECT_EQ(octet_3a.as<cause_struct>().recommendation_present, 1);
    EXPECT_EQ(octet_3a.as<cause_struct>().recommendation, 1);
    EXPECT_EQ(octet_3a.as<cause_struct>().value, 16);

    memory halves(request);
    unpack(halves, from_hex("150821 62f2101234 0002aabb 01020304 026162"), 0);
    const request_struct &r = halves.as<request_struct>();
    EXPECT_EQ(r.attach_type, 1);
    EXPECT_EQ(r.key_set, 2);
    EXPECT_EQ(r.area.plmn.mnc[2], 15);
    EXPECT_EQ(r.no_container, 2);
    EXPECT_EQ(r.container_size, 3u); // octets behind a length get one more
    EXPECT_EQ(r.no_name, 2);

    memory lists(items);
    unpack(lists, from_hex("0009 000101aa 000204aabb"), 0);
    EXPECT_EQ(lists.as<items_struct>().no_list, 1);
    EXPECT_EQ(lists.as<items_struct>().no_rest, 5);

    memory low_high(rest_octets);
    unpack(low_high, from_hex("68"), 0);
    EXPECT_EQ(low_high.as<rest_octets_struct>().power_tag, LH_LOW);
    EXPECT_EQ(low_high.as<rest_octets_struct>().where_tag, LH_HIGH);
    EXPECT_EQ(low_high.as<rest_octets_struct>().where, 5);
}

/// The same tag is another bit elsewhere in the block.
TEST(wire, low_and_high_depend_on_the_place_in_the_block)
{
    rest_octets_struct value = {LH_LOW, LH_LOW, 0, 0};
    std::uint8_t       frame[2] = {0, 0};
    pack_info_struct   stream = {frame, 2};
    rest_octets_pack(&stream, &value);
    EXPECT_EQ(frame[0], 0x20); // 0x2B holds 1 and 0 there
    EXPECT_EQ(stream.bits, 4u);

    value.power_tag = static_cast<low_high_enum>(2); // neither: nothing is written
    stream = {frame, 0};
    rest_octets_pack(&stream, &value);
    EXPECT_EQ(stream.bits, 1u);
}

// ------------------------------------------------------------------------------------------------ optional elements

struct loop_case {
    const char   *subject;
    const char   *elements; ///< behind 850221
    const char   *there;    ///< letters of the elements that were read
    std::uint32_t understood; ///< octets, by `bits`
    std::int32_t  fr_size;
    std::uint32_t must_understand;
};

// i identity, a areas, f follow_on, 1 first, 2 second, p priority, o old, l large
const loop_case loop_cases[] = {
    {"one", "a1", "f", 4, 0, 0},
    {"third of two with one identifier", "350121 350122 350123", "12", 9, -3, 0},
    {"out of order", "a1 170102", "f", 4, -3, 0},
    {"an identifier alone twice: the octet behind goes too", "a1 a1 55", "f", 4, -2, 0},
    {"a half octet twice", "83 84", "p", 4, -1, 0},
    {"a fixed value twice", "19abcd 19abce", "o", 6, -3, 0},
    {"a length of 16 bits twice", "7b0001ee 7b0001ff", "l", 7, -4, 0},
    {"unknown", "2201ff", "", 3, -3, 0},
    {"unknown, to be understood", "0a01ff a1", "f", 4, -3, 1},
    {"unknown of one octet", "c5 a1", "f", 4, -1, 0},
    {"unknown, its length beyond the frame is the next identifier", "2209ff", "", 3, -3, 1},
    {"twice, its length beyond the frame", "a1 1730 a1", "f", 4, -5, 0},
    {"in order, its length beyond the frame", "4a30a1", "af", 5, -1, 0},
    {"all there: the rest is not looked at",
     "1705f401020304 4a0a62f210123462f2105678 a1 350121 350122 83 19abcd 7b0002eeff 77", "iaf12pol", 38, 1, 0},
};

std::string there(const accept_struct &v)
{
    std::string letters;
    const auto  add = [&](std::uint8_t present, char letter) { letters += present != 0 ? std::string(1, letter) : ""; };
    add(v.identity_present, 'i');
    add(v.areas_present, 'a');
    add(v.follow_on_present, 'f');
    add(v.first_present, '1');
    add(v.second_present, '2');
    add(v.priority_present, 'p');
    add(v.old_present, 'o');
    add(v.large_present, 'l');
    return letters;
}

TEST(wire, optional_elements)
{
    for (const loop_case &c : loop_cases) {
        SCOPED_TRACE(c.subject);
        memory        value(accept_message);
        const reading r = unpack(value, from_hex(std::string("850221 ") + c.elements), 1);
        EXPECT_EQ(there(value.as<accept_struct>()), c.there);
        EXPECT_EQ(r.bits, c.understood * 8);
        EXPECT_EQ(r.frame, static_cast<std::ptrdiff_t>(c.understood));
        EXPECT_EQ(r.fr_size, c.fr_size);
        EXPECT_EQ(r.must_understand, c.must_understand);
    }
}

TEST(wire, an_error_record_is_not_needed)
{
    accept_struct      value = {};
    const octets       message = from_hex("8502210a01ff");
    unpack_info_struct stream = {const_cast<std::uint8_t *>(message.data()), 0, 6, nullptr};
    accept_unpack(&value, &stream);
    EXPECT_EQ(stream.bits, 24u);
}

// ------------------------------------------------------------------------------------------------ lengths

/// An accept with that many areas of 5 octets.
octets pack_areas(std::uint8_t areas)
{
    accept_struct value = {};
    octets        elements(areas * sizeof(area_struct));
    value.areas_present = 1;
    value.no_areas = areas;
    value.areas = reinterpret_cast<area_struct *>(elements.data());
    octets           frame(2000);
    pack_info_struct stream = {frame.data(), 0};
    accept_pack(&stream, &value);
    frame.resize(stream.bits / 8);
    return frame;
}

TEST(wire, a_length_of_255_octets_fits)
{
    const octets message = pack_areas(51);
    EXPECT_EQ(message.size(), 3u + 2 + 255);
    EXPECT_EQ(message[4], 255);
}

TEST(wire_death_test, a_length_that_does_not_fit_ends_the_process)
{
    EXPECT_EXIT(pack_areas(52), testing::ExitedWithCode(1),
                "^obj.gen.debug.tt_wire_cases_def_rest:length of areas will not fit length field with width 8.\n$");
    items_struct value = {};
    item_struct  one = {};
    octets       contents(255);
    one.no_contents = 255;
    one.contents = contents.data();
    std::vector<item_struct> list(255, one);
    value.no_list = 254; // of 258 octets
    value.list = list.data();
    octets           frame(66000);
    pack_info_struct stream = {frame.data(), 0};
    items_pack(&stream, &value);
    EXPECT_EQ(stream.bits / 8, 2u + 254 * 258);
    value.no_list = 255;
    stream = {frame.data(), 0};
    EXPECT_EXIT(items_pack(&stream, &value), testing::ExitedWithCode(1), "length of items .* with width 16");
}

TEST(wire, a_length_keeps_the_offset_of_the_cursor)
{
    cause_struct     value = {};
    std::uint8_t     frame[6] = {0xF0, 0, 0, 0, 0, 0};
    pack_info_struct stream = {frame, 4};
    value.value = 16;
    cause_pack(&stream, &value);
    EXPECT_EQ(to_hex(octets(frame, frame + 4)), "f0280900");
    EXPECT_EQ(stream.bits, 4u + 24);
}

} // namespace
