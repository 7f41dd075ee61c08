// A message as a tree of named values: the one place that knows how octets of a structure of that name are read.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "image.h"
#include "peer_message.h"
#include "session.h"

namespace solvane::tools {

struct message_tree {
    const domain *in = nullptr; ///< whose dictionary describes the structure; null: none does
    value_node    value;
    bool          read = false; ///< false: there is no way to read it, or the library died on it
    bool          died = false;
    std::string   remarks;      ///< what is not as it should be, or nothing
    std::size_t   octets_used = 0;
    PerError      error = {};   ///< of the library's codec, where it has one
};

/// Reads `message` as the structure `name`: with the library's codec where the peer table has one, else, a service
/// message of the agent, by its wire form.  Codecs want `lend_memory` before the start.  With `isolate` a child process
/// tries the codec first.
message_tree tree_of(session &work, const std::string &name, const octets &message, bool isolate);

/// Decodes containers: the octets of every member that `what`, "member=structure", names become that structure, which
/// stands below them under its name.  Throws `failure` (exit_usage) where there is no `=` in it.  Octets that cannot be
/// read are told as a finding.
void open_containers(session &work, value_node &in, const std::string &what, bool isolate);

/// The members in a line, `name=value`; counts, capacities and the code of the message itself are left out, long
/// arrays told by their size.
std::string inline_text(const value_node &node);

/// Octets in hex, many of them cut and told by their number; a text in quotes.
std::string octets_text(std::span<const std::uint8_t> octets);

} // namespace solvane::tools
