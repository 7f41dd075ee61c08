// Peer message classification against peer_names.tsv, which lists by structure name what the library keeps by
// message type; then what that list cannot say: demands, local parameters, UMTS radio resource messages.
#include <array>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "solvane/solvane.h"
#include "tt_peermsg.h"

namespace {

using octets = std::vector<std::uint8_t>;

std::string text(const char *name)
{
    return name != nullptr ? name : "(none)";
}

/// A message to the stack with copies of its octets; the buffer of the peer octets is padded to four.
struct message {
    octets        peer, local;
    tt_msg_struct ilm = {};

    message(unsigned sap_id, unsigned msg_id, octets peer_octets, octets local_params = {})
        : peer(std::move(peer_octets)), local(std::move(local_params))
    {
        ilm.dest_entity_id = ENTITY_STACK;
        ilm.sap_id         = static_cast<std::uint8_t>(sap_id);
        ilm.msg_id         = static_cast<std::uint16_t>(msg_id);
        ilm.peer_buff.no_peer_buff_ptr = static_cast<std::uint16_t>(peer.size());
        peer.resize(peer.size() < 4 ? 4 : peer.size());
        ilm.peer_buff.peer_buff_ptr              = peer.data();
        ilm.local_params.no_local_params_ptr     = static_cast<std::uint16_t>(local.size());
        ilm.local_params.local_params_ptr        = local.empty() ? nullptr : local.data();
    }
    message(const message &) = delete;

    const char *name() const { return tt_peer_struct_name(&ilm); }
    const char *rrc_text() const { return tt_peer_rrc_msg_name(&ilm); }
};

// ------------------------------------------------------------------------------------------ the list by name

struct octet_test {
    unsigned octet, mask, value;
};

struct naming_rule {
    std::string             name;
    std::vector<octet_test> tests;
};

/// Rules by service access point and message identifier.
class rule_book
{
public:
    rule_book()
    {
        std::ifstream file(PEER_NAMES);
        for (std::string line; std::getline(file, line);)
            if (!line.empty() && line[0] != '#')
                add(line);
    }

    /// The rule that names a message, or null; more than one is a fault of the list.
    const naming_rule *find(unsigned pair, const std::uint8_t *peer) const
    {
        const naming_rule *found = nullptr;
        for (const naming_rule &rule : by_number[number_of_pair[pair]])
            if (holds(rule, peer)) {
                EXPECT_EQ(found, nullptr) << rule.name << " and " << found->name;
                found = &rule;
            }
        return found;
    }

    bool                          empty(unsigned pair) const { return number_of_pair[pair] == 0; }
    const std::vector<unsigned>  &admitted() const { return pairs; }
    const std::vector<naming_rule> &rules(unsigned pair) const { return by_number[number_of_pair[pair]]; }

private:
    static bool holds(const naming_rule &rule, const std::uint8_t *peer)
    {
        for (const octet_test &test : rule.tests)
            if ((peer[test.octet] & test.mask) != test.value)
                return false;
        return true;
    }

    static std::vector<unsigned> numbers(const std::string &list)
    {
        std::vector<unsigned> result;
        std::istringstream    in(list);
        for (std::string item; std::getline(in, item, ',');)
            result.push_back(static_cast<unsigned>(std::stoul(item)));
        return result;
    }

    /// "0/0F=03 1=25"
    static std::vector<octet_test> octet_tests(const std::string &list)
    {
        std::vector<octet_test> result;
        std::istringstream      in(list);
        for (std::string item; in >> item && item != "-";) {
            octet_test test = {0, 0xFF, 0};
            if (std::sscanf(item.c_str(), "%x/%x=%x", &test.octet, &test.mask, &test.value) != 3) {
                EXPECT_EQ(std::sscanf(item.c_str(), "%x=%x", &test.octet, &test.value), 2) << item;
            }
            result.push_back(test);
        }
        return result;
    }

    void add(const std::string &line)
    {
        std::istringstream         in(line);
        std::array<std::string, 4> field;
        for (std::string &part : field)
            std::getline(in, part, '\t');
        for (unsigned sap : numbers(field[1]))
            for (unsigned msg_id : numbers(field[2])) {
                std::uint16_t &number = number_of_pair[sap << 16 | msg_id];
                if (number == 0) {
                    number = static_cast<std::uint16_t>(by_number.size());
                    by_number.emplace_back();
                    pairs.push_back(sap << 16 | msg_id);
                }
                by_number[number].push_back({field[0], octet_tests(field[3])});
            }
    }

    std::vector<std::uint16_t>            number_of_pair = std::vector<std::uint16_t>(1u << 24);
    std::vector<std::vector<naming_rule>> by_number      = {{}};
    std::vector<unsigned>                 pairs; ///< sap_id << 16 | msg_id
};

const rule_book &book()
{
    static const rule_book rules;
    return rules;
}

/// Compares a classification with the list; true when they agree.
bool agrees(const message &m)
{
    const unsigned     pair = static_cast<unsigned>(m.ilm.sap_id << 16 | m.ilm.msg_id);
    const naming_rule *rule = book().empty(pair) ? nullptr : book().find(pair, m.peer.data());
    const char        *name = m.name();
    if (rule == nullptr ? name == nullptr : name != nullptr && rule->name == name)
        return true;
    ADD_FAILURE() << "sap " << unsigned(m.ilm.sap_id) << " msg " << m.ilm.msg_id << " octets " << std::hex
                  << unsigned(m.peer[0]) << ' ' << unsigned(m.peer[1]) << ' ' << unsigned(m.peer[2]) << ' '
                  << unsigned(m.peer[3]) << ": should be " << (rule ? rule->name : "(none)") << ", is "
                  << text(name);
    return false;
}

// Pairs of access point and message identifier, by protocol: SM, CC, short messages, MM and GMM, CISS, CP, RR, EMM,
// ESM, 5GMM, 5GSM, UE policy.
TEST(PeerName, TheListIsWhole)
{
    EXPECT_EQ(book().admitted().size(), 2u + 3 + 5 + 2 * 7 + 3 + 2 * 5 + 6 + 32 + 24 + 27 + 2 + 2);
}

// Octets that are a message of some protocol wherever one is looked for.
const octets peer_samples[] = {
    {0x00, 0x00, 0x00, 0x00}, {0x03, 0x25, 0x25, 0x25}, {0x25, 0x01, 0x02, 0x01}, {0x06, 0x12, 0x12, 0x12},
    {0x16, 0x26, 0x21, 0x21}, {0x08, 0x01, 0x01, 0x01}, {0x19, 0x04, 0x04, 0x04}, {0x8A, 0x55, 0x55, 0x55},
    {0x1B, 0x3A, 0x3A, 0x3A}, {0x2E, 0x01, 0x00, 0xD6},
};

TEST(PeerName, EveryAccessPointAndMessage)
{
    unsigned failures = 0;
    for (const octets &sample : peer_samples) {
        message m(0, 0, sample);
        for (unsigned pair = 0; pair < 1u << 24 && failures < 20; pair++) {
            m.ilm.sap_id = static_cast<std::uint8_t>(pair >> 16);
            m.ilm.msg_id = static_cast<std::uint16_t>(pair);
            failures += !agrees(m);
        }
    }
}

// Every value of two octets, the others as a discriminator would have them.
TEST(PeerName, EveryTwoOctets)
{
    constexpr unsigned places[][2] = {{0, 1}, {1, 2}, {0, 3}};

    unsigned failures = 0;
    for (unsigned pair : book().admitted())
        for (const auto &place : places) {
            message m(pair >> 16, pair & 0xFFFF, {0x2E, 0x05, 0x33, 0x44});
            for (unsigned value = 0; value < 0x10000 && failures < 20; value++) {
                m.peer[place[0]] = static_cast<std::uint8_t>(value >> 8);
                m.peer[place[1]] = static_cast<std::uint8_t>(value);
                failures += !agrees(m);
            }
        }
}

/// Octets that the rule wants, zero elsewhere.
octets octets_for(const naming_rule &rule)
{
    octets result(4);
    for (const octet_test &test : rule.tests)
        result[test.octet] = static_cast<std::uint8_t>(test.value);
    return result;
}

TEST(PeerName, OnlyTwoEntitiesAreNamed)
{
    const std::set<unsigned> named = {ENTITY_STACK, ENTITY_GSM_STACK};
    for (unsigned pair : book().admitted())
        for (const naming_rule &rule : book().rules(pair)) {
            message m(pair >> 16, pair & 0xFFFF, octets_for(rule));
            for (unsigned entity = 1; entity < 256; entity++) {
                m.ilm.dest_entity_id = static_cast<std::uint8_t>(entity);
                ASSERT_EQ(text(m.name()), named.contains(entity) ? rule.name : "(none)") << "entity " << entity;
            }
        }
}

// The domains with access points of their own name nothing there either.
TEST(PeerName, HookedDomainsNameNothing)
{
    for (const auto &[entity, sap] : {std::pair{ENTITY_TD_LTE_STACK, 252}, {ENTITY_NR_STACK, 249}})
        for (unsigned length : {0u, 4u}) {
            message m(static_cast<unsigned>(sap), 9556, octets(length));
            m.ilm.dest_entity_id = static_cast<std::uint8_t>(entity);
            EXPECT_EQ(m.name(), nullptr);
        }
}

TEST(PeerNameDeathTest, DefaultEntityIsAsserted)
{
    message m(163, 9556, {0});
    m.ilm.dest_entity_id = ENTITY_DEFAULT;
    EXPECT_DEATH(m.name(), "Assertion failed: ilm->dest_entity_id != ENTITY_DEFAULT, "
                           "file ..\\\\sdi\\\\test\\\\solvane\\\\src\\\\tt_peermsg, line 32\n");
}

// ------------------------------------------------------------------------------------------ demands

TEST(PeerName, NoOctetsNoName)
{
    for (unsigned pair : book().admitted())
        for (const naming_rule &rule : book().rules(pair)) {
            message m(pair >> 16, pair & 0xFFFF, octets_for(rule));
            m.ilm.peer_buff.no_peer_buff_ptr = 0;
            const bool delivered = rule.name == "mnm_sms_deliver_struct";
            EXPECT_EQ(m.name() != nullptr, delivered) << rule.name;

            // No more is a null buffer read, whatever its length; a message that its identifier names needs none.
            m.ilm.peer_buff.no_peer_buff_ptr = 4;
            m.ilm.peer_buff.peer_buff_ptr    = nullptr;
            EXPECT_EQ(m.name() != nullptr, rule.tests.empty() && !delivered) << rule.name;
        }
}

// The octet with the type is left alone when the discriminator is another: the buffers here have no padding.
TEST(PeerName, ShortMessagesOfAnotherProtocol)
{
    for (unsigned pair : book().admitted()) {
        const auto    only = std::make_unique<std::uint8_t[]>(1);
        tt_msg_struct ilm  = message(pair >> 16, pair & 0xFFFF, {}).ilm;
        only[0]            = 0x0F;
        const bool reads_octet_1 = pair >> 16 == 204 || (pair >> 16 == 255 && (pair & 0xFFFF) >= 5);
        if (reads_octet_1)
            continue;
        ilm.peer_buff.peer_buff_ptr    = only.get();
        ilm.peer_buff.no_peer_buff_ptr = 1;
        EXPECT_EQ(tt_peer_struct_name(&ilm) != nullptr, book().rules(pair)[0].tests.empty());
    }
}

struct edge_case {
    const char *what;
    unsigned    sap_id, msg_id;
    octets      peer;
    const char *name;
};

TEST(PeerName, Edges)
{
    const edge_case cases[] = {
        {"EMM, an identifier outside its range", 163, 9999, {0x07, 0x41}, "(none)"},
        {"EMM, octets of no sense", 163, 9556, {0xFF}, "emm_peer_attach_req_struct"},
        {"CC, type under a sequence number", 49, 27, {0x03, 0x47}, "(none)"},
        {"CC, the same without", 49, 27, {0x03, 0x07}, "cc_peer_connect_ms_nw_struct"},
        {"CC, transaction in the high nibble", 49, 32, {0x83, 0x2D}, "cc_peer_release_nw_ms_struct"},
        {"CC, prompt indication", 49, 10271, {0x03, 0x05}, "(none)"},
        {"MM, type under a sequence number", 51, 22, {0x05, 0x48}, "mm_peer_lu_req_struct"},
        {"GMM, set-up of a GPRS connection", 51, 22, {0x08, 0x01}, "(none)"},
        {"GMM, skip bits of the type", 84, 37, {0x08, 0xC8}, "gmm_peer_rau_req_struct"},
        {"SM, type unmasked", 44, 30, {0x0A, 0xC1}, "(none)"},
        {"SMS, submit under a report's identifier", 50, 12310, {0xFD}, "mnm_sms_submit_struct"},
        {"SMS, report under another identifier", 50, 12308, {0x00}, "(none)"},
        {"SMS, reserved indicator", 50, 12309, {0x03}, "(none)"},
        {"5GSM, extended discriminator with other high bits", 197, 9812, {0x0E, 0, 0, 0xC1}, "(none)"},
        {"RR, L2 pseudo length ahead", 255, 5, {0x49, 0x06, 0x1B}, "rr_peer_sysinfo_type3_struct"},
        {"RR, the same on a dedicated channel", 255, 3, {0x49, 0x06, 0x1B}, "(none)"},
    };
    for (const edge_case &c : cases)
        EXPECT_EQ(text(message(c.sap_id, c.msg_id, c.peer).name()), c.name) << c.what;
}

// ------------------------------------------------------------------------------------------ UMTS radio resource

/// Counts what goes through the memory slots while it lives, and frees what was left behind.
class watched_memory
{
public:
    watched_memory()
    {
        saved                  = dll_info_version;
        dll_info_version.alloc = [](std::size_t size, std::uint8_t, std::uint16_t, std::uint32_t) {
            void *block = std::malloc(size);
            blocks().insert(block);
            sizes().push_back(size);
            return block;
        };
        dll_info_version.free = [](void *block, std::uint8_t, std::uint16_t, std::uint32_t) {
            EXPECT_EQ(blocks().erase(block), 1u) << "a block that was not allocated is freed";
            std::free(block);
        };
    }
    ~watched_memory()
    {
        for (void *block : blocks())
            std::free(block);
        blocks().clear();
        sizes().clear();
        dll_info_version = saved;
    }
    watched_memory(const watched_memory &) = delete;

    static std::set<void *> &blocks()
    {
        static std::set<void *> live;
        return live;
    }
    static std::vector<std::size_t> &sizes()
    {
        static std::vector<std::size_t> all;
        return all;
    }

private:
    dll_info_version_struct saved;
};

/// A single chunk whose record has `code` in octet 1.
octets local_params(unsigned code)
{
    return {0, 0, 4, 0, 0xEE, static_cast<std::uint8_t>(code), 0xEE, 0xEE};
}

struct rrc_case {
    unsigned    code; ///< the last of this kind that is tried
    const char *names[3];
    bool        freed[3]; ///< the copy of the local parameters
};

TEST(PeerNameRrc, ByChannelAndDirection)
{
    constexpr unsigned msg_ids[3] = {2, 3, 24779};
    const rrc_case     cases[] = {
        {3, {"UL_DCCH_Message", "DL_DCCH_Message", "(none)"}, {false, false, false}},
        {31, {"(none)", "(none)", "(none)"}, {true, true, true}},
        {32, {"(none)", "BCCH_FACH_Message", "(none)"}, {true, false, false}},
        {33, {"(none)", "PCCH_Message", "PCCH_Message"}, {true, false, false}},
        {34, {"UL_CCCH_Message", "DL_CCCH_Message", "DL_CCCH_Message"}, {false, false, false}},
        {255, {"(none)", "(none)", "(none)"}, {true, true, true}},
    };
    unsigned code = 0;
    for (const rrc_case &c : cases)
        for (; code <= c.code; code++)
            for (unsigned sap : {126u, 127u, 154u, 158u})
                for (unsigned i = 0; i < 3; i++) {
                    SCOPED_TRACE(::testing::Message() << "code " << code << " sap " << sap << " msg " << msg_ids[i]);
                    watched_memory memory;
                    EXPECT_EQ(text(message(sap, msg_ids[i], {0}, local_params(code)).name()), c.names[i]);
                    EXPECT_EQ(memory.sizes(), std::vector<std::size_t>{8});
                    EXPECT_EQ(memory.blocks().empty(), c.freed[i]);
                }
}

TEST(PeerNameRrc, Demands)
{
    watched_memory memory;
    EXPECT_EQ(message(126, 2, {}, local_params(0)).name(), nullptr);
    EXPECT_EQ(message(126, 2, {0}).name(), nullptr);
    EXPECT_EQ(message(126, 4, {0}, local_params(0)).name(), nullptr);
    EXPECT_TRUE(memory.sizes().empty());
}

// Two chunks after the record, whose address goes to octets 8 and 12 of the record; 5 octets of data take 8.
TEST(PeerNameRrc, ChainOfChunks)
{
    watched_memory memory;
    octets chain = {0, 0, 14, 0, 7, 34, 7, 7, 7, 7, 7, 7, 0xA0, 0xA1, 0xA2, 0xA3, 0xB0, 0xB1, 7, 7};
    const octets two_chunks = {12, 0, 5, 0, 1, 2, 3, 4, 5, 0, 0, 0, 16, 0, 1, 0, 9, 0, 0, 0};
    chain.insert(chain.end(), two_chunks.begin(), two_chunks.end());

    message m(126, 3, {0}, chain);
    EXPECT_EQ(text(m.name()), "DL_CCCH_Message");
    EXPECT_EQ(m.local, chain) << "the host's own block is left alone";
    ASSERT_EQ(memory.blocks().size(), 1u);

    const auto *copy = static_cast<const std::uint8_t *>(*memory.blocks().begin());
    octets      flat = chain;
    for (const auto &[field, data] : {std::pair{12u, 24u}, {16u, 36u}}) {
        const auto address = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(copy + data));
        std::memcpy(&flat[field], &address, 4);
    }
    EXPECT_EQ(octets(copy, copy + chain.size()), flat) << "four octets a pointer, the neighbours as they were";
}

// A pointer field beyond the block is not written: the blocks here are exact.
TEST(PeerNameRrc, PointerFieldOutsideTheBlock)
{
    for (unsigned field : {13u, 14u, 16u, 0xFFFFu}) {
        watched_memory memory;
        octets         chain = local_params(33);
        const octets   chunk = {static_cast<std::uint8_t>(field), static_cast<std::uint8_t>(field >> 8), 2, 0, 1, 2,
                                0, 0};
        chain.insert(chain.end(), chunk.begin(), chunk.end());
        EXPECT_EQ(text(message(127, 3, {0}, chain).name()), "PCCH_Message");
    }
}

TEST(PeerNameRrcDeathTest, ChainsThatDoNotAddUp)
{
    const std::pair<const char *, octets> chains[] = {
        {"shorter than a head", {0, 0, 0}},
        {"first chunk longer than the block", {0, 0, 5, 0, 0, 0, 0, 0}},
        {"octets after the last chunk", {0, 0, 4, 0, 0, 0, 0, 0, 0}},
        {"a head cut off", {0, 0, 4, 0, 0, 0, 0, 0, 0, 0}},
        {"second chunk longer than the block", {0, 0, 4, 0, 0, 0, 0, 0, 4, 0, 1, 0}},
        {"padding left out", {0, 0, 2, 0, 0, 0}},
    };
    for (const auto &[what, chain] : chains) {
        EXPECT_DEATH(message(126, 2, {0}, chain).name(), "") << what;
        EXPECT_DEATH(message(126, 2, {0, 0, 0, 0, 0, 0, 0}, chain).rrc_text(), "") << what;
    }
}

// ------------------------------------------------------------------------------------------ UMTS message types

/// Octets with `value` in `width` bits from bit `bit` on, ones round it but for bit 1.
octets with_field(unsigned bit, unsigned width, unsigned value)
{
    octets result(7, 0xFF);
    for (unsigned i = 0; i < width; i++)
        if ((value >> (width - 1 - i) & 1) == 0)
            result[(bit + i) / 8] &= static_cast<std::uint8_t>(~(0x80 >> (bit + i) % 8));
    return result;
}

struct rrc_text_case {
    unsigned    code, msg_id;
    unsigned    bit, width, value;
    const char *text;
};

TEST(PeerRrcText, ByChannelAndType)
{
    const rrc_text_case cases[] = {
        {33, 3, 0, 1, 0, "pagingType1"},
        {33, 3, 0, 1, 1, "spare"},
        {32, 3, 0, 2, 0, "systemInformation"},
        {32, 3, 0, 2, 1, "systemInformationChangeIndication"},
        {32, 3, 0, 2, 3, "spare1"},
        {34, 2, 44, 2, 0, "cellUpdate"},
        {34, 2, 44, 2, 1, "rrcConnectionRequest"},
        {34, 2, 44, 2, 3, "spare"},
        {34, 3, 44, 3, 0, "cellUpdateConfirm"},
        {34, 3, 44, 3, 3, "rrcConnectionSetup"},
        {34, 3, 44, 3, 7, "spare1"},
        {0, 2, 44, 5, 0, "activeSetUpdateComplete"},
        {3, 2, 44, 5, 16, "radioBearerSetupFailure"},
        {99, 2, 44, 5, 27, "uplinkDirectTransfer"},
        {33, 2, 44, 5, 31, "spare1"},
        {32, 2, 44, 5, 30, "spare2"},
        {0, 3, 44, 5, 0, "activeSetUpdate"},
        {3, 3, 44, 5, 7, "handoverFromUTRANCommand_CDMA2000"},
        {31, 3, 44, 5, 24, "utranMobilityInformation"},
        {255, 3, 44, 5, 25, "spare7"},
        {1, 3, 44, 5, 31, "spare1"},
    };
    for (const rrc_text_case &c : cases) {
        watched_memory memory;
        const octets   peer = with_field(c.bit, c.width, c.value);
        EXPECT_EQ(text(message(0, c.msg_id, peer, local_params(c.code)).rrc_text()), c.text)
            << "code " << c.code << " msg " << c.msg_id << " type " << c.value;
        EXPECT_TRUE(memory.blocks().empty());
    }
}

TEST(PeerRrcText, NoText)
{
    const octets whole = with_field(44, 5, 0);
    EXPECT_EQ(message(0, 24779, whole, local_params(0)).rrc_text(), nullptr);
    EXPECT_EQ(message(0, 2, {}, local_params(0)).rrc_text(), nullptr);
    EXPECT_EQ(message(0, 2, whole).rrc_text(), nullptr);

    octets unprotected = whole;
    unprotected[0] &= 0x7F;
    EXPECT_EQ(message(0, 2, unprotected, local_params(0)).rrc_text(), nullptr);
    EXPECT_EQ(text(message(0, 3, unprotected, local_params(33)).rrc_text()), "pagingType1");

    const octets cut(whole.begin(), whole.end() - 1); // the field of a dedicated channel ends in octet 6
    EXPECT_EQ(message(0, 2, cut, local_params(0)).rrc_text(), nullptr);
    EXPECT_EQ(text(message(0, 2, cut, local_params(34)).rrc_text()), "cellUpdate");
}

} // namespace
