// The memory of decoded values.  Every block comes through the slots of `dll_info_version`, which the host may
// have replaced, and starts as zero; the free function of the enclosing type, or the caller, gives it back.
//
// The trailing arguments are the allocation tag that the slots get for a host that tracks leaks: flag (1 in
// generated code, 0 in hand-written code), source-file code, line.  The default slots ignore it.
//
// Out of memory: "memory allocation error!!" through the error sink, then the exit slot with 1.  Should that
// return, so does the function, with null.
#pragma once

#include <cstddef>
#include <cstdint>

/// A zeroed block of `size` octets.  Null for a size of 0 where the slot answers so.
void *AsnMemAlloc(std::size_t size, std::uint8_t flag = 0, std::uint16_t file_code = 0, std::uint32_t line = 0);

/// Resizes `block`, null for a new one, from `old_size` to `new_size` octets; what it grows by is zeroed.  A block
/// that could not be resized stays as it is.
void *AsnMemRealloc(void *block, std::size_t new_size, std::size_t old_size, std::uint8_t flag = 0,
                    std::uint16_t file_code = 0, std::uint32_t line = 0);

/// Releases `block`; null is ignored.
void AsnMemFree(void *block, std::uint8_t flag = 0, std::uint16_t file_code = 0, std::uint32_t line = 0);

/* Growing arrays
 *   array      address of the pointer to the first element; the elements may move
 *   capacity   elements that there is room for; raised once by `step`, which may leave it below `needed`, or to
 *              `needed` when `step` is 0
 *   answer     the capacity before; -1 when it was enough and nothing was done
 *   new elements are not zeroed  */

std::int32_t AsnGrowArray(void *array, std::uint32_t *capacity, std::uint32_t needed, std::uint32_t element_size,
                          std::uint32_t step, std::uint8_t flag = 0, std::uint16_t file_code = 0,
                          std::uint32_t line = 0);

/// AsnGrowArray for octets, to exactly `needed`.
std::int32_t AsnGrowBytes(void *array, std::uint32_t *capacity, std::uint32_t needed, std::uint8_t flag = 0,
                          std::uint16_t file_code = 0, std::uint32_t line = 0);

/// Releases what the pointer at `array` points to and clears the pointer.
void AsnFreeArray(void *array, std::uint8_t flag = 0, std::uint16_t file_code = 0, std::uint32_t line = 0);
