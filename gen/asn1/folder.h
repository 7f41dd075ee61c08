// The ASN.1 files of a folder of definitions: one schema a domain.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "asn1/lower.h"
#include "asn1/tree.h"
#include "base/diagnostics.h"
#include "base/input.h"

namespace solvane::gen::asn1 {

/// A file that stands for all ASN.1 files of a domain.
struct replacement {
    std::string              domain;
    std::string              file;
    std::vector<std::string> modules;  ///< those that are generated; empty: all
};

struct domain_schema {
    std::string domain;
    schema      modules;
    std::size_t octets = 0;  ///< of its files
};

/// Puts the replacements in the place of what they replace.  Answers false when one of them cannot be read, and puts
/// its path into `unreadable`.
bool replace_schemas(std::vector<input_file> &inputs, const std::vector<replacement> &by, std::string &unreadable);

/// Parses the ASN.1 files.  Messages show a path behind `shown_root`.
std::vector<domain_schema> parse_schemas(diagnostics &diag, const std::vector<input_file> &inputs,
                                         const std::vector<replacement> &by, const std::string &shown_root);

/// Checks and lowers all of them.  The answer is good for use only where `diag` holds no error.
lowered lower_schemas(diagnostics &diag, std::vector<domain_schema> &schemas);

} // namespace solvane::gen::asn1
