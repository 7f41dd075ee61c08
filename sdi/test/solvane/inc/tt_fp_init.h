// The default memory slots of the service record: what stands in `dll_info_version` until a host puts its own there.
// Code on a hot path may compare a slot with them and call the heap directly (tt_block.h).
#pragma once

#include <cstddef>
#include <cstdint>

void *tt_slot_alloc(std::size_t size, std::uint8_t flag, std::uint16_t file_code, std::uint32_t line);
void *tt_slot_realloc(void *block, std::size_t new_size, std::size_t old_size, std::uint8_t flag,
                      std::uint16_t file_code, std::uint32_t line);
void  tt_slot_free(void *block, std::uint8_t flag, std::uint16_t file_code, std::uint32_t line);

/// Whether the default slots lead to tt_block.h.  Under a sanitizer they lead to the C library's heap, whose blocks
/// the sanitizer watches.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool tt_slots_have_classes = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(memory_sanitizer) || __has_feature(thread_sanitizer)
inline constexpr bool tt_slots_have_classes = false;
#else
inline constexpr bool tt_slots_have_classes = true;
#endif
#else
inline constexpr bool tt_slots_have_classes = true;
#endif
