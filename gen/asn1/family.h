// The schema families that a stack build can hold: one a domain, each with the rules of its codecs.
#pragma once

#include <string_view>

#include "model/per.h"

namespace solvane::gen::asn1 {

struct family {
    per::schema rules;
    bool        fixed_lists_in_place = false;  ///< a SEQUENCE OF of a fixed size is an array in the record
};

/// The family of a domain; null for a domain that has none.
const family *family_of(std::string_view domain);

} // namespace solvane::gen::asn1
