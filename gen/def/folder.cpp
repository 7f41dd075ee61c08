// Takes every file of a folder to its parser.
#include "def/folder.h"

#include <filesystem>

#include <fmt/format.h>

#include "def/lex.h"
#include "def/parse.h"

namespace solvane::gen::def {
namespace {

void parse_file_of_root(diagnostics &diag, const input_file &input, std::uint32_t file, folder_def &folder)
{
    if (input.path == "baseline.def")
        folder.baseline = parse_baseline(diag, lex(diag, file), file);
    else if (input.path == "peers.def")
        folder.peers = parse_peers(diag, lex(diag, file), file);
    else
        diag.error({file, 0, 0}, "at the root there are baseline.def and peers.def only");
}

void parse_trace_file(diagnostics &diag, const input_file &input, std::uint32_t file, folder_def &folder)
{
    if (input.path == "traces/modules.tsv")
        folder.trace_modules = read_table(diag, file, input.path, {"module"});
    else if (input.path.ends_with(".tsv"))
        folder.traces.push_back(read_table(diag, file, input.path, {"module", "format", "file", "line", "status"}));
    else
        diag.error({file, 0, 0}, "traces holds .tsv tables only");
}

void parse_domain_file(diagnostics &diag, const input_file &input, const std::string &parent, std::uint32_t file,
                       folder_def &folder)
{
    if (input.path.ends_with(".def"))
        folder.units.push_back(parse_unit(diag, lex(diag, file), file, input.path));
    else if (parent == common_folder)
        diag.error({file, 0, 0}, "common holds .def files only");
    else if (input.path.ends_with(".val"))
        folder.values.push_back(parse_values(diag, lex(diag, file), file, input.path));
    else if (input.path == parent + "/messages.tsv")
        folder.messages.emplace(parent, read_table(diag, file, input.path, {"code", "name", "sap", "struct"}));
    else
        diag.error({file, 0, 0}, "the only table of a domain is messages.tsv");
}

} // namespace

folder_def parse_folder(diagnostics &diag, const std::vector<input_file> &inputs, const std::string &shown_root)
{
    folder_def folder;
    for (const input_file &input : inputs) {
        if (input.path.ends_with(".asn")) // of another front end
            continue;
        const std::uint32_t file = diag.add_file(shown_root + input.path, input.text);
        const std::string   parent = std::filesystem::path(input.path).parent_path().generic_string();
        if (parent.empty())
            parse_file_of_root(diag, input, file, folder);
        else if (parent == trace_folder)
            parse_trace_file(diag, input, file, folder);
        else
            parse_domain_file(diag, input, parent, file, folder);
    }
    return folder;
}

} // namespace solvane::gen::def
