// Real RRC messages through the codecs of the complete published modules: every one decodes without an error, its
// fields are those of the reference decode, and its encoding gives the same bits.
//
// The messages stand in the folder that SOLVANE_VECTORS names and are read from there.  The reference is of a later
// release and shows more than the message's own fields: what octet strings contain, and the meaning of bit maps.
// Such entries stand deeper than the field that they explain.  It shows NAS messages elsewhere, and empty strings not
// at all.  known.tsv lists what differs for another reason.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "printed_value.h"
#include "rrc_codecs.h"

namespace solvane::test {

namespace {

// Behind a frame: a codec reads on where the frame ends too early.
constexpr std::size_t spare_room = 1 << 16;

struct kind {
    std::string family, name;
    std::size_t record_size;
    std::function<void(void *, unpack_info_struct *)>        unpack;
    std::function<void(pack_info_struct *, void *)>          pack;
    std::function<std::uint32_t(void *)>                     size;
    std::function<void(void *, AsnTextBuf *, std::uint16_t)> print;
    std::function<void(void *)>                              free;
};

#define KIND(family, name, type)                                                                                      \
    kind                                                                                                              \
    {                                                                                                                 \
        family, name, sizeof(type), [](void *v, auto *s) { type##_unpack(static_cast<type *>(v), s); },               \
            [](auto *s, void *v) { type##_pack(s, static_cast<type *>(v)); },                                         \
            [](void *v) { return type##_size(static_cast<type *>(v)); },                                              \
            [](void *v, auto *b, std::uint16_t i) { type##_print(static_cast<type *>(v), b, i); },                    \
            [](void *v) { type##_free(static_cast<type *>(v)); }                                                      \
    }

const std::vector<kind> kinds = {
    KIND("lte_rrc", "BCCH_BCH", Lte_BCCH_BCH_Message),
    KIND("lte_rrc", "BCCH_DL_SCH", Lte_BCCH_DL_SCH_Message),
    KIND("lte_rrc", "PCCH", Lte_PCCH_Message),
    KIND("lte_rrc", "MCCH", Lte_MCCH_Message),
    KIND("lte_rrc", "DL_CCCH", Lte_DL_CCCH_Message),
    KIND("lte_rrc", "DL_DCCH", Lte_DL_DCCH_Message),
    KIND("lte_rrc", "UL_CCCH", Lte_UL_CCCH_Message),
    KIND("lte_rrc", "UL_DCCH", Lte_UL_DCCH_Message),
    KIND("lte_rrc", "UE_EUTRA_Capability", Lte_UE_EUTRA_Capability),
    KIND("nr_rrc", "BCCH_BCH", Nr_BCCH_BCH_Message),
    KIND("nr_rrc", "BCCH_DL_SCH", Nr_BCCH_DL_SCH_Message),
    KIND("nr_rrc", "PCCH", Nr_PCCH_Message),
    KIND("nr_rrc", "DL_CCCH", Nr_DL_CCCH_Message),
    KIND("nr_rrc", "DL_DCCH", Nr_DL_DCCH_Message),
    KIND("nr_rrc", "UL_CCCH", Nr_UL_CCCH_Message),
    KIND("nr_rrc", "UL_CCCH1", Nr_UL_CCCH1_Message),
    KIND("nr_rrc", "UL_DCCH", Nr_UL_DCCH_Message),
    KIND("nr_rrc", "RRCReconfiguration", Nr_RRCReconfiguration),
    KIND("nr_rrc", "RadioBearerConfig", Nr_RadioBearerConfig),
    KIND("nr_rrc", "CellGroupConfig", Nr_CellGroupConfig),
    KIND("nr_rrc", "UE_NR_Capability", Nr_UE_NR_Capability),
    KIND("nr_rrc", "UE_MRDC_Capability", Nr_UE_MRDC_Capability),
    KIND("nr_rrc", "UERadioAccessCapabilityInformation", Nr_UERadioAccessCapabilityInformation),
    KIND("umts_rrc", "DL_CCCH", DL_CCCH_Message),
    KIND("umts_rrc", "DL_DCCH", DL_DCCH_Message),
    KIND("umts_rrc", "UL_CCCH", UL_CCCH_Message),
    KIND("umts_rrc", "UL_DCCH", UL_DCCH_Message),
    KIND("umts_rrc", "PCCH", PCCH_Message),
    KIND("umts_rrc", "BCCH_FACH", BCCH_FACH_Message),
    KIND("umts_rrc", "BCCH_BCH", BCCH_BCH_Message),
};

// The types of LTE's module for messages between nodes are not among ours.
const std::map<std::string, std::string> kinds_without_codec = {
    {"lte_rrcUERadioAccessCapabilityInformation", "of a module that is not generated"}};

// ------------------------------------------------------------------------------------------------------- one message

/// A message in memory, released at the end.
struct decoded {
    const kind                &of;
    std::vector<std::uint64_t> record;
    PerError                   error{};
    std::uint32_t              bits = 0;

    decoded(const kind &k, std::vector<std::uint8_t> octets) : of(k), record((k.record_size + 7) / 8)
    {
        const auto length = static_cast<std::int32_t>(octets.size());
        octets.resize(octets.size() + spare_room);
        unpack_info_struct stream = {octets.data(), 0, length, &error};
        of.unpack(record.data(), &stream);
        bits = stream.bits;
    }
    ~decoded() { of.free(record.data()); }
    decoded(const decoded &)            = delete;
    decoded &operator=(const decoded &) = delete;

    std::string printed()
    {
        AsnTextBuf buffer;
        AsnTextBufInit(&buffer, 1 << 16);
        of.print(record.data(), &buffer, 0);
        const std::string text = buffer.text;
        AsnTextBufFree(&buffer);
        return text;
    }

    /// Its encoding, and the bits of that.
    std::vector<std::uint8_t> encoded(std::uint32_t &written)
    {
        std::vector<std::uint8_t> octets(spare_room);
        pack_info_struct          stream = {octets.data(), 0};
        of.pack(&stream, record.data());
        written = stream.bits;
        octets.resize((stream.bits + 7) / 8);
        return octets;
    }
};

bool same_bits(const std::vector<std::uint8_t> &one, const std::vector<std::uint8_t> &other, std::uint32_t bits)
{
    for (std::uint32_t n = 0; n < bits; ++n)
        if (((one[n / 8] ^ other[n / 8]) & 0x80 >> n % 8) != 0)
            return false;
    return true;
}

// ------------------------------------------------------------------------------------------------------- references

struct reference_item {
    std::string name, value, text;
    int         depth;
};

std::string comparable(std::string name)
{
    for (char &c : name)
        c = c == '-' ? '_' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return name;
}

/// The value of a string of up to 32 bits: its bits right-justified, or its octets.
std::string as_number(const std::string &digits, const std::string &text)
{
    const std::size_t length = text.rfind('B') > text.rfind('\'') && text.rfind('B') != std::string::npos
                                   ? std::stoul(text.substr(text.rfind('B') + 1))
                                   : digits.size() * 4;
    if (digits.empty() || digits.size() > 8)
        return "";
    return std::to_string(std::stoul(digits, nullptr, 16) >> (digits.size() * 4 - length));
}

bool same_value(const std::string &ours, const reference_item &theirs)
{
    if (ours == "TRUE" || ours == "FALSE")
        return theirs.value == (ours == "TRUE" ? "1" : "0");
    if (ours[0] != '\'')
        return theirs.value == ours;
    const std::string digits = ours.substr(1, ours.find('\'', 1) - 1);
    std::string       shown  = theirs.value;
    std::erase(shown, ':');
    if (digits == shown || digits.empty())
        return true;
    if (shown.starts_with("0x"))
        shown = std::to_string(std::stoul(shown, nullptr, 16));
    return as_number(digits, ours) == shown;
}

/// "dummy" is what a later release calls fields that it gave up.
bool same_name(const printed_item &ours, const reference_item &theirs)
{
    const std::string name = comparable(ours.name), shown = theirs.name;
    return ours.name[0] == '*' || shown == name || shown.ends_with("_" + name) || shown.starts_with(name) ||
           shown.ends_with("." + name) || shown.starts_with("dummy");
}

bool agrees(const printed_item &ours, const reference_item &theirs)
{
    switch (ours.kind) {
    case printed_item::what::count: return theirs.value == ours.text && theirs.text.find("item") != std::string::npos;
    case printed_item::what::selector:
        return comparable(theirs.text) == comparable(ours.text) || theirs.text == "dummy";
    case printed_item::what::leaf: return same_name(ours, theirs) && same_value(ours.text, theirs);
    }
    return false;
}

/// What the reference adds on its own account, wherever it stands: readings of a value, and fields of releases behind
/// ours, whose names end in _r16, _v1610 and their like.
bool is_addition(const reference_item &theirs)
{
    const auto has = [&](const char *part) { return theirs.name.find(part) != std::string::npos; };
    return theirs.text.find("-> band") != std::string::npos || theirs.name.starts_with("urnti_") || has("_r16") ||
           has("_r17") || has("_v16") || has("_v17");
}

/// What the reference may leave out, or has under another name in its later release.
bool may_be_missing(const printed_item &ours)
{
    return ours.text == "NULL" || ours.text == "''H" || ours.text.starts_with("''B") || ours.name == "spare" ||
           comparable(ours.name).find("nas") != std::string::npos;
}

/// The first field that differs, or nothing; counts those that agree.
std::string compare(const std::vector<printed_item> &ours, const std::vector<reference_item> &theirs,
                    std::size_t &agreed)
{
    std::size_t at    = 0;
    int         depth = -1;
    for (const printed_item &item : ours) {
        std::size_t ahead = at;
        while (ahead < theirs.size() && !agrees(item, theirs[ahead]) &&
               (theirs[ahead].depth > depth || is_addition(theirs[ahead])))
            ++ahead;
        if (ahead < theirs.size() && agrees(item, theirs[ahead])) {
            depth = theirs[ahead].depth;
            at    = ahead + 1;
            ++agreed;
        } else if (!may_be_missing(item)) {
            return item.name + " " + item.text + ", reference " +
                   (at < theirs.size() ? theirs[at].name + " " + theirs[at].value : "ends");
        }
    }
    return "";
}

// --------------------------------------------------------------------------------------------------------- families

std::filesystem::path vectors_folder()
{
    const char *folder = std::getenv("SOLVANE_VECTORS");
    return folder != nullptr ? folder : SOLVANE_VECTORS_DEFAULT;
}

std::vector<std::string> columns_of(const std::string &line)
{
    std::vector<std::string> columns;
    std::istringstream       in(line);
    for (std::string column; std::getline(in, column, '\t');)
        columns.push_back(column);
    return columns;
}

std::vector<std::uint8_t> octets_of(const std::string &hex)
{
    std::vector<std::uint8_t> octets;
    for (std::size_t n = 0; n + 1 < hex.size(); n += 2)
        octets.push_back(static_cast<std::uint8_t>(std::stoul(hex.substr(n, 2), nullptr, 16)));
    return octets;
}

std::map<std::string, std::string> known_differences()
{
    std::map<std::string, std::string> known;
    std::ifstream                      in(SOLVANE_RRC_KNOWN);
    for (std::string line; std::getline(in, line);)
        if (const auto c = columns_of(line); c.size() == 2)
            known[c[0]] = c[1];
    return known;
}

std::vector<reference_item> reference_of(const nlohmann::json &items)
{
    std::vector<reference_item> out;
    for (const auto &item : items) {
        const std::string name = item[0];
        out.push_back({comparable(name.substr(name.find('.') + 1)), item[1], item.size() > 3 ? item[3] : "", item[2]});
    }
    return out;
}

struct tally {
    std::size_t messages = 0, same_bits = 0, same_values = 0, fields = 0;
};

/// Everything that is asked of one message; answers what is wrong, or nothing.
std::string try_message(const kind &k, const std::vector<std::uint8_t> &octets,
                        const std::vector<reference_item> &reference, tally &t)
{
    decoded message(k, octets);
    if (message.error.code != 0 || message.bits > octets.size() * 8)
        return "error " + std::to_string(message.error.code) + ", read " + std::to_string(message.bits) + " of " +
               std::to_string(octets.size() * 8) + " bits";
    const std::string text        = message.printed();
    const std::string difference = compare(take_apart(text), reference, t.fields);
    if (!difference.empty())
        return difference;

    std::uint32_t                   written = 0;
    const std::vector<std::uint8_t> again   = message.encoded(written);
    if (written == message.bits && same_bits(octets, again, written)) {
        ++t.same_bits;
        return "";
    }
    // Not the same bits: the sender's schema had fewer additions than ours, or more, which were skipped; or an
    // ENUMERATED had an addition's value, for which the lowest one goes out.  Without the latter the values are the
    // same.
    decoded second(k, again);
    if (second.error.code == 0 && (second.printed() == text || message.printed() != text)) {
        ++t.same_values;
        return "";
    }
    return "another value after encoding and decoding";
}

class rrc_vectors : public testing::TestWithParam<std::string> {};

TEST_P(rrc_vectors, decode_and_encode)
{
    const std::string family = GetParam();
    std::ifstream     table(vectors_folder() / (family + ".tsv"));
    std::ifstream     decodes(vectors_folder() / "reference" / (family + ".json"));
    if (!table || !decodes)
        GTEST_SKIP() << "no messages in " << vectors_folder();
    const nlohmann::json  reference = nlohmann::json::parse(decodes);
    const auto            known     = known_differences();
    const AsnErrorHandler sink      = AsnSetErrorHandler([](const char *, int) {});
    tally                 t;
    std::string           line;
    std::getline(table, line);
    while (std::getline(table, line)) {
        const std::vector<std::string> c = columns_of(line);
        const auto k = std::ranges::find_if(kinds, [&](const kind &k) { return k.family == family && k.name == c[1]; });
        if (k == kinds.end()) {
            EXPECT_TRUE(kinds_without_codec.contains(family + c[1])) << c[1];
            continue;
        }
        ++t.messages;
        const std::string wrong = try_message(*k, octets_of(c[3]), reference_of(reference.at(c[0])), t);
        if (const auto at = known.find(c[0]); at != known.end())
            EXPECT_NE(wrong, "") << c[0] << " passes, but is known for: " << at->second;
        else
            EXPECT_EQ(wrong, "") << c[0] << " " << c[1] << " " << c[2];
    }
    AsnSetErrorHandler(sink);
    std::printf("%s: %zu messages, %zu fields agree; %zu encode to the same bits, %zu to the same values\n",
                family.c_str(), t.messages, t.fields, t.same_bits, t.same_values);
    EXPECT_GT(t.fields, t.messages);
}

INSTANTIATE_TEST_SUITE_P(families, rrc_vectors, testing::Values("lte_rrc", "nr_rrc", "umts_rrc"),
                         [](const auto &info) { return info.param; });

} // namespace
} // namespace solvane::test
