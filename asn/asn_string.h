// OCTET STRING and BIT STRING with their lengths: X.691 (2015) clauses 16 and 17, unaligned variant.
//
// One pair of functions serves all size constraints, by `mode`:
//
//     mode                 constraint          length is written as
//     ASN_NO_SIZE     0    none                general length determinant; `lower` counts as 0
//     ASN_LOWER_SIZE  1    lower bound only    general length determinant
//     ASN_BOTH_SIZES  2    both bounds         upper below 65536: length - lower in the bits of upper - lower, none
//                                              for a fixed size; otherwise as mode 1
//
// Bounds count octets for AsnOcts, bits for AsnBits.  Lengths from 16384 on go in fragments.  The trailing arguments
// are the allocation tag (asn_heap.h).
#pragma once

#include <cstdint>

#include "asn_values.h"
#include "solvane/solvane.h"

enum : std::uint32_t { ASN_NO_SIZE = 0, ASN_LOWER_SIZE = 1, ASN_BOTH_SIZES = 2 };

/* Pack
 *   the length goes out as it is: one below `lower` is reported by the determinant, in each round of fragments with
 *   what is left by then, and nothing tests `upper`  */

void AsnOcts_pack(pack_info_struct *stream, const AsnOcts *octets, std::int32_t upper, std::uint32_t lower,
                  std::uint32_t mode);
void AsnBits_pack(pack_info_struct *stream, const AsnBits *bit_string, std::int32_t upper, std::uint32_t lower,
                  std::uint32_t mode);

/* Unpack
 *   result   zeroed, or a block to be resized; its length becomes that of the string
 *   errors   the length, or one fragment's, is above the octets that fr_size tells: hard error, and a length of 0
 *            with what has been allocated so far still in the record.  A string that ends inside the last octet
 *            of the frame, but does not fit behind the cursor's offset: hard error, its last octet is 0
 *   owns     the block is the caller's, to be released with AsnMemFree; an empty string has none  */

void AsnOcts_unpack(AsnOcts *result, unpack_info_struct *stream, std::int32_t upper, std::uint32_t lower,
                    std::uint32_t mode, std::uint8_t flag = 0, std::uint16_t file_code = 0, std::uint32_t line = 0);
void AsnBits_unpack(AsnBits *result, unpack_info_struct *stream, std::int32_t upper, std::uint32_t lower,
                    std::uint32_t mode, std::uint8_t flag = 0, std::uint16_t file_code = 0, std::uint32_t line = 0);

/// Bits of the general length determinant and the contents.
std::uint32_t AsnOcts_size(const AsnOcts *octets);

/// Makes `result` a copy of `source`, as a DEFAULT is installed; the octet of a last incomplete eight is copied
/// whole.
void AsnBits_copy(AsnBits *result, const AsnBits *source, std::uint8_t flag = 0, std::uint16_t file_code = 0,
                  std::uint32_t line = 0);

/* Memory of a string
 *   Alloc   a zeroed block of as many octets as the length says, which for AsnBits are its bits, not divided
 *   Free    releases the block, sets its pointer to null and leaves the length
 * DIFFERS a string of no length is looked at all the same: a decode that failed in a fragment has left it a block  */

void AsnOctsAlloc(AsnOcts *octets, std::uint8_t flag = 0, std::uint16_t file_code = 0, std::uint32_t line = 0);
void AsnOctsFree(AsnOcts *octets, std::uint8_t flag = 0, std::uint16_t file_code = 0, std::uint32_t line = 0);
void AsnBitsAlloc(AsnBits *bits, std::uint8_t flag = 0, std::uint16_t file_code = 0, std::uint32_t line = 0);
void AsnBitsFree(AsnBits *bits, std::uint8_t flag = 0, std::uint16_t file_code = 0, std::uint32_t line = 0);
void AsnOidAlloc(AsnOid *oid, std::uint8_t flag = 0, std::uint16_t file_code = 0, std::uint32_t line = 0);
void AsnOidFree(AsnOid *oid, std::uint8_t flag = 0, std::uint16_t file_code = 0, std::uint32_t line = 0);
