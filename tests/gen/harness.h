// Cases of the front end: a folder of definitions in one file, and the stages run over it.
//
// A line `//// path` begins a file of the folder; what stands ahead of the first one is `stack/case.def`, of a case of
// ASN.1 `lte/case.asn`.  Files
// that a case does not give come from defaults/, unless it says `//// path ABSENT`.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "base/diagnostics.h"
#include "base/input.h"
#include "model/model.h"

namespace solvane::gen::test {

/// An error that a case expects: part of its text, and where.  Line 0 is the file as a whole.
struct expected_error {
    std::string   path;
    std::uint32_t line = 0;
    std::string   text;
};

struct test_case {
    std::string                 name;  ///< file name without its ending
    std::vector<input_file>     inputs;
    std::vector<std::string>    own_paths;  ///< files that the case gives itself
    std::vector<expected_error> errors;
};

/// The cases whose names end in `ending`, by name: those of ASN.1 are "asn1/NN-subject-ok", in a folder of their own.
std::vector<std::string> case_names(const std::string &ending);
std::filesystem::path    case_path(const std::string &name, const std::string &extension);
test_case                read_case(const std::string &name);

/// A case of the given text; what stands ahead of its first file marker is the file `first`.
test_case make_case(const std::string &text, const std::string &first = "stack/case.def");

/// All stages up to the laying of rows; stops where a stage reports an error.
model run_stages(const std::vector<input_file> &inputs, diagnostics &diag);

std::string read_text(const std::filesystem::path &path);

} // namespace solvane::gen::test
