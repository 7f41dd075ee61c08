// Real messages against their reference decodes: what a family's file says, and how one message fares.
//
// A family's messages stand in `<family>.tsv` and `reference/<family>.json` of the folder that SOLVANE_VECTORS names;
// how the reference's fields are named by us stands in fields/<family>.tsv, which README.md here describes.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "dictionary.h"
#include "image.h"
#include "plugin.h"
#include "text.h"

namespace solvane::test {

using tools::octets;

/// A message as it was captured, and what the reference decoder shows: field and value in the order of the wire.
struct vector_row {
    std::string                                      id, kind, message;
    octets                                           hex;
    std::vector<std::pair<std::string, std::string>> fields;
};

/// How a message is classified, and which structure it is.
struct message_rule {
    std::string kind, message, structure, sap, msg;
};

/// Octets in one structure that are another one.
struct inner_rule {
    std::string   structure, path, inner;
    std::size_t   offset = 0;
    std::uint32_t mask = 0, value = 0;
};

struct field_rule {
    std::string path, conversion;
};

/// What fields/<family>.tsv says.
struct family_rules {
    std::vector<message_rule>                                         messages;
    std::vector<inner_rule>                                           inners;
    std::map<std::string, std::vector<field_rule>>                    fields;
    std::map<std::string, std::string>                                ignored; ///< pattern of fields to reason
    std::map<std::string, std::string>                                skipped; ///< kind to reason
    std::map<std::pair<std::string, std::string>, std::string>        known;   ///< id and field to reason
};

/// What became of one message.
struct outcome {
    bool                     decoded = false, repacked = false;
    std::size_t              fields = 0, agreeing = 0;
    std::vector<std::string> differences;
    std::vector<std::string> unmapped; ///< fields that no rule names
};

/// The value of one member: a number, or octets.
struct leaf {
    std::string  path;
    bool         is_octets = false;
    std::int64_t number = 0;
    octets       bytes;
};

std::filesystem::path vectors_folder();

std::vector<vector_row> read_vectors(const std::string &family);

/// Complains through GoogleTest of lines that it does not understand.
family_rules read_rules(const std::filesystem::path &file);

/// The started plug-in.
const tools::plugin &loaded_plugin();

/// Classifies, unpacks, compares, packs and compares again.
outcome try_message(const family_rules &rules, const vector_row &row);

/// The members that are present, in the order of the record; arrays of octets cut to their counts.
std::vector<leaf> leaves_of(const tools::value_node &value);

/// Whether a member and the reference's text say the same; for the conversions see README.md.
bool agrees(const leaf &ours, const std::string &conversion, const std::string &reference);

} // namespace solvane::test
