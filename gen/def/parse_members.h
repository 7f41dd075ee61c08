// Productions that structures and wire formats share.
#pragma once

#include <string>

#include "def/parser.h"

namespace solvane::gen::def {

type_ref   parse_type(parser &in);
declarator parse_declarator(parser &in);
attribute  parse_attribute(parser &in);
bool       begins_attribute(const parser &in);
member_def parse_member(parser &in);

/// A member behind its type and declarator.
member_def parse_member_rest(parser &in, member_def m);

/// The end of the block of `of`.
void close_block(parser &in, const std::string &of);

/// An attribute's word.
std::string_view spelled(attribute::what kind);

} // namespace solvane::gen::def
