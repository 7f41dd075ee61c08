#include "layout_answers.h"

#include <algorithm>
#include <cstring>

#include <fmt/format.h>

#include "dictionary.h"
#include "peer_message.h"

namespace solvane::tools {

namespace {

constexpr const char *answer_struct = "mta_tt_offsize_resp_struct";

std::uint32_t entries_of(const mta_tt_offsize_resp_struct &answer, int which)
{
    const std::uint32_t counts[] = {answer.no_btoffsize, answer.no_offsize, answer.bitf_offsize.no_bit_map};
    return counts[which];
}

bool begins(std::uint8_t seg_id)
{
    return seg_id == RW_OFSZ_SEG_FIRST || seg_id == RW_OFSZ_NO_SEG;
}

bool ends(std::uint8_t seg_id)
{
    return seg_id == RW_OFSZ_SEG_LAST || seg_id == RW_OFSZ_NO_SEG;
}

} // namespace

/* Appends the entries to the target's table; `total` is how many it takes. */
std::string layout_answers::copy_piece(const mta_tt_offsize_resp_struct &answer, progress &at, std::uint32_t &total)
{
    rw_debug_info_struct &to = loaded_.info->target_offsize->records[answer.entity_id];
    const rw_debug_info_struct &own = loaded_.info->tool_offsize->records[answer.entity_id];
    const std::uint32_t   count = entries_of(answer, static_cast<int>(at.now));
    const std::uint32_t   room[] = {sizeof(rw_bt_info), own.no_offsize, own.no_bit_map};
    total = at.now == part::basic ? count : room[static_cast<int>(at.now)];
    if (count > room[static_cast<int>(at.now)] - at.filled) {
        return fmt::format("more than the {} entries that the plug-in knows", room[static_cast<int>(at.now)]);
    }
    switch (at.now) {
    case part::basic: std::memcpy(to.bt_info, answer.btoffsize, count); break;
    case part::offsets: /* storage for the host to fill, whatever the record says to other readers */
        std::copy_n(answer.offsize, count, const_cast<rw_offsize_type *>(to.offsize) + at.filled);
        to.no_offsize = own.no_offsize;
        break;
    case part::fields:
        std::copy_n(answer.bitf_offsize.bit_map, count, to.bit_map + at.filled);
        to.no_bit_map = own.no_bit_map;
        break;
    case part::done: break;
    }
    at.filled += count;
    return {};
}

std::string layout_answers::take_piece(const mta_tt_offsize_resp_struct &answer)
{
    progress &at = domains_[answer.entity_id];
    if (answer.no_btoffsize != 0) {
        at = {}; /* a domain is answered from its basic types on */
    }
    if (begins(answer.seg_id)) {
        at.filled = 0;
    }
    const int now = static_cast<int>(at.now);
    for (int other = 0; other < 3; ++other) {
        if (at.now == part::done || (other != now && entries_of(answer, other) != 0)) {
            return "not the part that was due";
        }
    }
    std::uint32_t     total = 0;
    const std::string complaint = copy_piece(answer, at, total);
    if (!complaint.empty() || !ends(answer.seg_id)) {
        return complaint;
    }
    if (at.filled != total) {
        return fmt::format("{} of {} entries", at.filled, total);
    }
    at = {static_cast<part>(now + 1), 0};
    return {};
}

bool layout_answers::take(const octets &packet, std::string &complaint)
{
    const tt_peer_row *row = peer_row(loaded_, answer_struct);
    if (packet.empty() || packet[0] != MTA_TT_OFFSIZE_RESP || row == nullptr ||
        row->size != sizeof(mta_tt_offsize_resp_struct)) {
        return false;
    }
    const decoded_message found = decode_peer(*row, {packet.begin() + 1, packet.end()}, false);
    const auto &answer = *reinterpret_cast<const mta_tt_offsize_resp_struct *>(found.value.data());
    if (found.error.code != 0 || answer.entity_id >= TT_NO_DOMAINS) {
        complaint = "a layout answer that cannot be read";
    } else if (const std::string why = take_piece(answer); !why.empty()) {
        complaint = fmt::format("layout of domain {}: {}", domain_name(answer.entity_id), why);
        domains_[answer.entity_id] = {part::basic, 0};
    }
    release_memory();
    return true;
}

std::string layout_answers::missing() const
{
    std::string out;
    for (const auto &in : domains_of(loaded_)) {
        if (domains_[static_cast<std::size_t>(in.number)].now != part::done) {
            out.append(out.empty() ? "" : ", ").append(in.name);
        }
    }
    return out;
}

bool layout_answers::complete() const
{
    return missing().empty();
}

} // namespace solvane::tools
