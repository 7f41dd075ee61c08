// The zeroing wrappers over the memory slots, and growing arrays.
#include "asn_heap.h"

#include <cstring>

#include "asn_block.h"
#include "asn_report.h"
#include "solvane/solvane.h"

namespace {

// No block: an error unless none was asked for.
void *out_of_memory(std::size_t size)
{
    if (size != 0) {
        AsnErrorPrint("memory allocation error!!\n");
        dll_info_version.exit(1);
    }
    return nullptr;
}

void *pointer_at(const void *array)
{
    void *block;
    std::memcpy(&block, array, sizeof block);
    return block;
}

void set_pointer_at(void *array, void *block)
{
    std::memcpy(array, &block, sizeof block);
}

} // namespace

void *asn_alloc_by_slot(std::size_t size, const asn_tag &tag)
{
    void *const block = dll_info_version.alloc_clear(size, tag.flag, tag.file_code, tag.line);
    return block ? dll_info_version.memset_clear(block, 0, size) : out_of_memory(size);
}

void *AsnMemAlloc(std::size_t size, std::uint8_t flag, std::uint16_t file_code, std::uint32_t line)
{
    return asn_alloc(asn_alloc_is_default(), size, {flag, file_code, line});
}

void *AsnMemRealloc(void *block, std::size_t new_size, std::size_t old_size, std::uint8_t flag,
                    std::uint16_t file_code, std::uint32_t line)
{
    void *const grown = dll_info_version.realloc_clear(block, new_size, old_size, flag, file_code, line);
    if (!grown)
        return out_of_memory(new_size);
    if (new_size > old_size)
        dll_info_version.memset_clear(static_cast<std::uint8_t *>(grown) + old_size, 0, new_size - old_size);
    return grown;
}

void AsnMemFree(void *block, std::uint8_t flag, std::uint16_t file_code, std::uint32_t line)
{
    asn_free(asn_free_is_default(), block, {flag, file_code, line});
}

std::int32_t AsnGrowArray(void *array, std::uint32_t *capacity, std::uint32_t needed, std::uint32_t element_size,
                          std::uint32_t step, std::uint8_t flag, std::uint16_t file_code, std::uint32_t line)
{
    const std::uint32_t before = *capacity;
    if (needed <= before)
        return -1;
    *capacity = step == 0 ? needed : before + step;

    const std::size_t size = element_size;
    set_pointer_at(
        array, dll_info_version.realloc(pointer_at(array), *capacity * size, before * size, flag, file_code, line));
    return static_cast<std::int32_t>(before);
}

std::int32_t AsnGrowBytes(void *array, std::uint32_t *capacity, std::uint32_t needed, std::uint8_t flag,
                          std::uint16_t file_code, std::uint32_t line)
{
    return AsnGrowArray(array, capacity, needed, 1, 0, flag, file_code, line);
}

void AsnFreeArray(void *array, std::uint8_t flag, std::uint16_t file_code, std::uint32_t line)
{
    if (void *const block = pointer_at(array)) {
        AsnMemFree(block, flag, file_code, line);
        set_pointer_at(array, nullptr);
    }
}
