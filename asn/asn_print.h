// Decoded values as text: ASN.1 value notation with comments, as the generated print functions of all types write it.
//
// The text grows in an AsnTextBuf.  A print primitive renders one universal type and ignores the indentation; what
// joins members, elements and alternatives stands at the end of this file.  Numbers go through the sprintf slot.
// Enumerated values are printed as numbers: their names do not exist at this level.
//
// A piece of text is built in 512 characters.  An indentation that does not fit, or an OCTET STRING of more than 166
// octets, is a broken invariant and ends the process.
#pragma once

#include <cstdint>

#include "asn_values.h"

/// Columns of an indentation step.
inline constexpr std::uint16_t ASN_INDENT_STEP = 4;

/// A growing text, zero-terminated while there is one.
struct AsnTextBuf {
    char         *text;
    std::uint32_t capacity; ///< octets allocated
    std::uint32_t step;     ///< octets that it grows by: the first capacity
    std::uint32_t length;   ///< characters, the terminator not counted
};

/// An empty text.  Answers 1, or 0 and no text for a capacity of 0.
int AsnTextBufInit(AsnTextBuf *buffer, std::uint32_t capacity);

/// Appends `text`.  Does nothing when either is null.
void AsnTextBufPut(AsnTextBuf *buffer, const char *text);

/// Empties the text and gives back what is above one step.
void AsnTextBufReset(AsnTextBuf *buffer);

/// Releases the text; the record stays as it is.
void AsnTextBufFree(AsnTextBuf *buffer);

/// Appends `count` blanks, below 512.
void AsnIndent(AsnTextBuf *buffer, std::uint16_t count);

// ---------------------------------------------------------------------------------------------------------------
// Universal types
// ---------------------------------------------------------------------------------------------------------------

/// What is known of the type in an ANY.
struct AnyInfo {
    std::int32_t  anyId;
    AsnOid        oid;
    AsnInt        intId;
    std::uint32_t size; ///< octets of the value's record
    void (*Encode)(void *stream, void *value);
    void (*Decode)(void *value, void *stream);
    void (*Free)(void *value);
    void (*Print)(AsnTextBuf *buffer, void *value);
};

struct AsnAny {
    AnyInfo *ai;
    void    *value;
};

void AsnBool_print(const AsnBool *value, AsnTextBuf *buffer, std::uint16_t indent); // TRUE, for any octet but 0; FALSE
void AsnEnum_print(const std::int32_t *value, AsnTextBuf *buffer, std::uint16_t indent); // 3
void AsnInt_print(const AsnInt *value, AsnTextBuf *buffer, std::uint16_t indent);        // -3
void UAsnInt_print(const UAsnInt *value, AsnTextBuf *buffer, std::uint16_t indent);      // 4294967295
void AsnNull_print(const AsnNull *value, AsnTextBuf *buffer, std::uint16_t indent);      // NULL
void AsnBits_print(const AsnBits *value, AsnTextBuf *buffer, std::uint16_t indent);      // abc' Hex: AsnBits_toWord
void AsnOcts_print(const AsnOcts *value, AsnTextBuf *buffer, std::uint16_t indent);      // '4100'H -- "A." --
void AsnOid_print(const AsnOid *value, AsnTextBuf *buffer, std::uint16_t indent);        // {1 2 3}
void AsnReal_print(const double *value, AsnTextBuf *buffer, std::uint16_t indent); // 1.50000000000000000E+00
void AsnAny_print(const AsnAny *value, AsnTextBuf *buffer, std::uint16_t indent);  // by its Print, else an error note

/// A string of 1 to 32 bits as a number, right-justified; of a longer one the last 32 bits, of an empty one 0.
std::uint32_t AsnBits_toWord(const AsnBits *bits);

/// The inverse, into the octets that the string has; those ahead of the last 32 bits become 0.
void AsnBits_fromWord(AsnBits *bits, std::uint32_t value);

// ---------------------------------------------------------------------------------------------------------------
// What joins the parts of a constructed value
// ---------------------------------------------------------------------------------------------------------------

/* Members
 *   name     as the schema spells it, with a blank behind
 *   indent   of the value around
 *   first    true until a member has been printed: the comma leads the next member  */

void AsnPrintSequence(AsnTextBuf *buffer); // { -- SEQUENCE --
void AsnPrintList(AsnTextBuf *buffer);     // { -- SEQUENCE OF --
void AsnPrintFirst(AsnTextBuf *buffer, std::uint16_t indent, const char *name);
void AsnPrintNext(AsnTextBuf *buffer, std::uint16_t indent, const char *name);
void AsnPrintMaybeFirst(AsnTextBuf *buffer, std::uint16_t indent, const char *name, bool *first);
void AsnPrintEnd(AsnTextBuf *buffer, std::uint16_t indent); // }
