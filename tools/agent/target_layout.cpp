#include "target_layout.h"

#include <algorithm>

#include <fmt/format.h>

#include "agent_packet.h"
#include "dictionary.h"
#include "failure.h"
#include "tt_mtastruct.h"

namespace solvane::tools {

namespace {

constexpr std::size_t words_a_piece = 1500;
constexpr std::size_t fields_a_piece = 200;
constexpr std::size_t octets_a_field = 15; /* on the wire */
constexpr std::size_t octets_of_head = 16; /* of a packet, with room */

std::uint8_t segment(std::size_t from, std::size_t count, std::size_t all)
{
    const bool first = from == 0;
    const bool last = from + count >= all;
    return first && last ? RW_OFSZ_NO_SEG : first ? RW_OFSZ_SEG_FIRST : last ? RW_OFSZ_SEG_LAST : RW_OFSZ_SEG_INTER;
}

octets packet_of(mta_tt_offsize_resp_struct &answer, std::uint8_t domain, std::uint8_t seg_id)
{
    answer.response = MTA_TT_OFFSIZE_RESP;
    answer.entity_id = domain;
    answer.seg_id = seg_id;
    octets out(octets_of_head + answer.no_btoffsize + 2U * answer.no_offsize +
               octets_a_field * answer.bitf_offsize.no_bit_map);
    out[0] = MTA_TT_OFFSIZE_RESP;
    pack_info_struct cursor = {out.data() + 1, 0};
    mta_tt_offsize_resp_pack(&cursor, &answer);
    out.resize(1 + cursor.bits / 8);
    return out;
}

/* Calls `make` with the start and length of each piece; an empty table is one empty piece. */
template <class Make> void in_pieces(std::size_t all, std::size_t most, Make make)
{
    std::size_t from = 0;
    do {
        const std::size_t count = std::min(most, all - from);
        make(from, count);
        from += count;
    } while (from < all);
}

struct alteration {
    std::string   structure, member;
    std::uint64_t value = 0;
};

alteration parse(const std::string &words)
{
    const std::size_t equals = words.rfind('=');
    const auto        value = equals != std::string::npos ? parse_number(words.substr(equals + 1)) : std::nullopt;
    if (!value || *value > 0xFFFF) {
        throw failure(exit_usage, fmt::format("{}: an alteration is STRUCT=SIZE or STRUCT.MEMBER=OFFSET", words));
    }
    const std::string head = words.substr(0, equals);
    const std::size_t dot = head.find('.');
    return {head.substr(0, dot), dot == std::string::npos ? "" : head.substr(dot + 1), *value};
}

const rw_member_row *find_member(const rw_struct_row &row, const std::string &name)
{
    for (std::uint32_t i = 0; i < row.no_members; ++i) {
        if (name == row.members[i].name) {
            return &row.members[i];
        }
    }
    return nullptr;
}

} // namespace

target_layout::target_layout(const plugin &loaded, const std::vector<std::string> &alterations)
{
    for (const auto &in : domains_of(loaded)) {
        const rw_debug_info_struct &types = *in.types;
        const auto                 *block = reinterpret_cast<const std::uint8_t *>(types.bt_info);
        tables                      made;
        made.domain = static_cast<std::uint8_t>(in.number);
        /* The last entry of the pattern is the pointer's, one octet. */
        made.basic.assign(block, block + RW_BT_INDEX_SIZE + types.bt_info->index[RW_KIND_VOID] + 1);
        made.offsize.assign(types.offsize, types.offsize + types.no_offsize);
        if (types.no_bit_map != 0) {
            made.bits.assign(types.bit_map, types.bit_map + types.no_bit_map);
        }
        domains_.push_back(std::move(made));
    }
    for (const auto &words : alterations) {
        alter(loaded, words);
    }
}

void target_layout::alter(const plugin &loaded, const std::string &words)
{
    const alteration wanted = parse(words);
    bool             done = false;
    const auto       all = domains_of(loaded);
    for (std::size_t i = 0; i < all.size(); ++i) {
        for (const rw_struct_row &row : all[i].structs()) {
            if (wanted.structure != row.name) {
                continue;
            }
            const rw_member_row *member = wanted.member.empty() ? nullptr : find_member(row, wanted.member);
            if (wanted.member.empty()) {
                domains_[i].offsize.at(row.size_index) = static_cast<rw_offsize_type>(wanted.value);
            } else if (member == nullptr || row.kind == RW_KIND_UNION) {
                continue;
            } else if (member->kind == RW_KIND_BIT_FIELD) {
                domains_[i].bits.at(member->offsize_index).offset = static_cast<std::uint16_t>(wanted.value);
            } else {
                domains_[i].offsize.at(member->offsize_index) = static_cast<rw_offsize_type>(wanted.value);
            }
            done = true;
        }
    }
    if (!done) {
        throw failure(exit_usage, fmt::format("{}: no structure has such a member", words));
    }
}

std::vector<octets> target_layout::answers() const
{
    std::vector<octets> out;
    for (const auto &each : domains_) {
        mta_tt_offsize_resp_struct basic = {};
        basic.no_btoffsize = static_cast<std::uint8_t>(each.basic.size());
        basic.btoffsize = const_cast<std::uint8_t *>(each.basic.data());
        out.push_back(packet_of(basic, each.domain, RW_OFSZ_NO_SEG));
        in_pieces(each.offsize.size(), words_a_piece, [&](std::size_t from, std::size_t count) {
            mta_tt_offsize_resp_struct piece = {};
            piece.no_offsize = static_cast<std::uint16_t>(count);
            piece.offsize = const_cast<rw_offsize_type *>(each.offsize.data() + from);
            out.push_back(packet_of(piece, each.domain, segment(from, count, each.offsize.size())));
        });
        in_pieces(each.bits.size(), fields_a_piece, [&](std::size_t from, std::size_t count) {
            mta_tt_offsize_resp_struct piece = {};
            piece.bitf_offsize.no_bit_map = static_cast<std::uint16_t>(count);
            piece.bitf_offsize.bit_map = const_cast<mta_bit_map_struct *>(each.bits.data() + from);
            out.push_back(packet_of(piece, each.domain, segment(from, count, each.bits.size())));
        });
    }
    return out;
}

} // namespace solvane::tools
