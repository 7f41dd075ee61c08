#include "peer_message.h"

#include <cstdlib>
#include <cstring>
#include <memory>

#include "isolate.h"

namespace solvane::tools {

namespace {

/* The classifier reads up to byte 3 of the peer buffer whatever its length, and codecs read on past the end of theirs:
 * the zeros there decode to the smallest value of each type, of which a garbled list can have thousands. */
constexpr std::size_t room_behind = 262144;

std::string name_of(const plugin &loaded, const tt_msg_struct &record)
{
    const char *name = loaded.info->tt_peer_struct_name(&record);
    return name != nullptr ? name : "";
}

/* Each block carries its size in front, because the library need not know the old size when one has to grow. */
struct alignas(std::max_align_t) block_head {
    std::size_t size;
};

struct free_block {
    void operator()(block_head *block) const { std::free(block); }
};

std::vector<std::unique_ptr<block_head, free_block>> lent;

void *lend(std::size_t size, std::uint8_t, std::uint16_t, std::uint32_t)
{
    auto *head = static_cast<block_head *>(std::calloc(1, sizeof(block_head) + size));
    if (head == nullptr) {
        std::abort(); /* the library takes no null for an answer */
    }
    head->size = size;
    lent.emplace_back(head);
    return head + 1;
}

void *lend_more(void *block, std::size_t size, std::size_t, std::uint8_t, std::uint16_t, std::uint32_t)
{
    void *fresh = lend(size, 0, 0, 0);
    if (block != nullptr) {
        const auto &old = static_cast<const block_head *>(block)[-1];
        std::memcpy(fresh, block, old.size < size ? old.size : size);
    }
    return fresh;
}

void keep(void *, std::uint8_t, std::uint16_t, std::uint32_t)
{
}

} // namespace

bool carries_message(const packet &what)
{
    return what.kind == packet_kind::agent && what.way != direction::out && !what.content.empty() &&
           what.content[0] == report_trace;
}

verdict classify(const plugin &loaded, layer_message message, std::uint8_t entity)
{
    const std::size_t length = message.peer.size();
    message.peer.resize(length + (length != 0 ? sizeof(std::uint32_t) : 0));
    tt_msg_struct record = as_record(message, entity);
    record.peer_buff.no_peer_buff_ptr = static_cast<std::uint16_t>(length);
    if (entity != ENTITY_DEFAULT && message.local_params.empty()) {
        return {false, name_of(loaded, record)};
    }
    /* A message to the infrastructure trips an assertion, and local parameters that do not fit together a fault. */
    const auto name = in_isolation([&] { return name_of(loaded, record); });
    return {!name, name.value_or("")};
}

const tt_peer_row *peer_row(const plugin &loaded, const std::string &name)
{
    for (std::uint32_t i = 0; i < loaded.peers->count; ++i) {
        if (name == loaded.peers->rows[i].name) {
            return &loaded.peers->rows[i];
        }
    }
    return nullptr;
}

void lend_memory(dll_info_version_struct &slots)
{
    slots.alloc = slots.alloc_clear = lend;
    slots.realloc = slots.realloc_clear = lend_more;
    slots.free = slots.free_tagged = keep;
}

void release_memory()
{
    lent.clear();
}

decoded_message decode_peer(const tt_peer_row &row, const octets &message, bool isolate)
{
    decoded_message out;
    out.message = message;
    out.message.resize(message.size() + room_behind);
    out.value.resize(row.size / sizeof(std::uint64_t) + 1);
    const auto decode = [&] {
        unpack_info_struct cursor = {out.message.data(), 0, static_cast<std::int32_t>(message.size()), &out.error};
        row.unpack(out.value.data(), &cursor);
        out.octets_used = (cursor.bits + 7U) / 8U;
        return std::string();
    };
    out.died = isolate && !in_isolation(decode);
    if (!out.died) {
        decode();
    }
    return out;
}

encoded_message encode_peer(const tt_peer_row &row, std::span<std::uint8_t> value, std::size_t room, bool isolate)
{
    encoded_message out;
    out.message.resize(room);
    const auto encode = [&] {
        pack_info_struct cursor = {out.message.data(), 0};
        row.pack(&cursor, value.data());
        out.bits = cursor.bits;
        return std::string();
    };
    out.died = isolate && !in_isolation(encode);
    if (!out.died) {
        encode();
    }
    out.message.resize((out.bits + 7U) / 8U);
    return out;
}

} // namespace solvane::tools
