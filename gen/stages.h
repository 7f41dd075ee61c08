// The stages of a run, from the files of a folder to the model with its rows laid.
#pragma once

#include <string>
#include <vector>

#include "asn1/folder.h"
#include "base/diagnostics.h"
#include "base/input.h"
#include "def/folder.h"
#include "model/model.h"

namespace solvane::gen {

/// The syntax trees of all inputs.
struct parsed_folder {
    def::folder_def                  definitions;
    std::vector<asn1::domain_schema> schemas;
};

/// Parses everything.  Messages show a path behind `shown_root`, which ends in '/' or is empty.
parsed_folder parse_all(diagnostics &diag, const std::vector<input_file> &inputs,
                        const std::vector<asn1::replacement> &schemas, const std::string &shown_root);

/// Checks and lowers everything; the rows are not laid yet.  Stops behind the stage that reports an error.
model lower_all(diagnostics &diag, parsed_folder folder);

} // namespace solvane::gen
