// Names from the command line, found in the domains or answered with what was perhaps meant.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "session.h"

namespace solvane::tools {

/// A type of a domain.
struct found_type {
    const domain *in = nullptr;
    type_use      use;
};

/// The type in every chosen domain that has it.  Throws `failure` (exit_findings) with suggestions when none has.
std::vector<found_type> find_in_domains(session &work, const std::string &name);

/// The structure or union behind a name in the first domain that has it, else `failure` (exit_findings).  A remark
/// names the other domains.
found_type find_record(session &work, const std::string &name);

/// The row of the peer table with that name.  Throws `failure` (exit_findings) with suggestions when there is none.
const tt_peer_row &find_peer_row(session &work, const std::string &name);

/// The type in the first chosen domain that has it, or nothing.
std::optional<found_type> describing_type(session &work, const std::string &name);

/// A number, or a literal of the enumeration that `field` of the domain's registry row names.  Throws `failure`
/// (exit_usage) when it is neither or above `limit`.
std::uint32_t number_or_literal(const domain &in, const char *tt_entity_info::*field, const std::string &text,
                                std::uint32_t limit);

/// The literal of a value in that enumeration, or an empty text.
std::string literal_text(const domain &in, const char *tt_entity_info::*field, std::uint32_t value);

/// "gsm, lte": the domains of all but the first.
std::string other_domains(const std::vector<found_type> &found);

} // namespace solvane::tools
