// solvane-gen: from a folder of definitions to the C++ sources of the plug-in's tables and records.
#include <algorithm>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/diagnostics.h"
#include "base/input.h"
#include "base/output.h"
#include "def/check.h"
#include "def/lex.h"
#include "def/lower.h"
#include "def/parse.h"
#include "emit/emit.h"
#include "model/dump.h"
#include "model/model.h"
#include "model/rows.h"
#include "model/scale.h"

namespace {

using namespace solvane::gen;

enum exit_code { exit_done = 0, exit_errors = 1, exit_usage = 2, exit_files = 3 };

struct options {
    std::string db;
    std::string out;
    std::string depfile;
    std::string depfile_target;
    std::string dump;
    std::string scale;
    bool        list_outputs = false;
};

int fail(const std::string &text)
{
    std::cerr << "solvane-gen: error: " << text << "\n";
    return exit_files;
}

int tell(const diagnostics &diag)
{
    std::cerr << diag.render();
    return exit_errors;
}

std::string dump_all_tokens(diagnostics &diag, const std::vector<input_file> &inputs)
{
    std::string out;
    for (const input_file &input : inputs) {
        if (!input.path.ends_with(".tsv"))
            out += fmt::format("== {}\n", input.path) +
                   def::dump_tokens(def::lex(diag, diag.add_file(input.path, input.text)));
    }
    return out;
}

std::string dump_all_trees(const def::folder_def &folder)
{
    std::string out;
    if (folder.baseline)
        out += "== baseline.def\n" + def::dump_tree(*folder.baseline);
    if (folder.peers)
        out += "== peers.def\n" + def::dump_tree(*folder.peers);
    for (const def::unit_def &unit : folder.units)
        out += fmt::format("== {}\n", unit.path) + def::dump_tree(unit);
    for (const def::values_def &values : folder.values)
        out += fmt::format("== {}\n", values.path) + def::dump_tree(values);
    return out;
}

/// What the outputs depend on: every file read, and the folders, which tell of files that come and go.
std::vector<std::string> dependencies(const std::string &root, const std::vector<input_file> &inputs)
{
    std::vector<std::string> paths = {root};
    for (const input_file &input : inputs) {
        const std::string parent = std::filesystem::path(root + "/" + input.path).parent_path().generic_string();
        if (std::find(paths.begin(), paths.end(), parent) == paths.end())
            paths.push_back(parent);
    }
    for (const input_file &input : inputs)
        paths.push_back(root + "/" + input.path);
    return paths;
}

std::optional<std::string> write_depfile(const options &o, const std::vector<input_file> &inputs,
                                         const std::vector<output_file> &outputs)
{
    std::vector<std::string> targets = {o.depfile_target};
    if (o.depfile_target.empty()) {
        targets.clear();
        for (const output_file &file : outputs)
            targets.push_back((std::filesystem::path(o.out) / file.path).generic_string());
    }
    const std::filesystem::path path(o.depfile);
    return write_outputs(path.parent_path(),
                         {{path.filename().generic_string(), make_depfile(targets, dependencies(o.db, inputs))}});
}

int write_all(const options &o, const std::vector<input_file> &inputs, const std::vector<output_file> &outputs)
{
    if (o.list_outputs) {
        std::cout << list_outputs(o.out, outputs);
        return exit_done;
    }
    std::optional<std::string> failed = write_outputs(o.out, outputs);
    if (!failed && !o.depfile.empty())
        failed = write_depfile(o, inputs, outputs);
    return failed ? fail(*failed) : exit_done;
}

int run(const options &o)
{
    std::string                                  unreadable;
    const std::optional<std::vector<input_file>> inputs = read_folder(o.db, unreadable);
    if (!inputs)
        return fail(fmt::format("cannot read '{}'", unreadable));

    diagnostics diag;
    if (o.dump == "tokens") {
        std::cout << dump_all_tokens(diag, *inputs);
        return diag.failed() ? tell(diag) : exit_done;
    }

    def::folder_def tree = def::parse_folder(diag, *inputs, o.db + "/");
    if (o.dump == "tree")
        std::cout << dump_all_trees(tree);
    if (diag.failed())
        return tell(diag);
    if (o.dump == "tree")
        return exit_done;

    def::checked_folder checked = def::check(diag, std::move(tree));
    if (diag.failed())
        return tell(diag);

    model m = def::lower(std::move(checked));
    if (!o.scale.empty())
        scale_up(m, o.scale == "full" ? 100u : static_cast<std::uint32_t>(std::stoul(o.scale)));
    lay_rows(m, diag);
    if (o.dump == "model")
        std::cout << dump_model(m);
    if (diag.failed())
        return tell(diag);
    if (!o.dump.empty())
        return exit_done;

    return write_all(o, *inputs, emit_all(m));
}

} // namespace

int main(int argc, char **argv)
{
    options  o;
    CLI::App app{"Examples:\n"
                 "  solvane-gen --db db -o build/generated --depfile build/generated.d\n"
                 "  solvane-gen --db db --dump=model | less\n"
                 "\nMakes the sources of the plug-in's tables and records of a folder of definitions.",
                 "solvane-gen"};
    app.set_version_flag("-V,--version", "solvane-gen 1.0.0");
    app.add_option("--db", o.db, "Folder of the definitions")
        ->required()
        ->check(CLI::ExistingDirectory)
        ->option_text("DIR");
    CLI::Option *out = app.add_option("-o,--output", o.out, "Output directory, made where it is missing")
                           ->option_text("DIR");
    app.add_option("--depfile", o.depfile, "Write what the outputs depend on, as a make rule")->option_text("FILE");
    app.add_option("--depfile-target", o.depfile_target, "Target of that rule in place of the outputs, such as a stamp")
        ->option_text("FILE");
    app.add_flag("--list-outputs", o.list_outputs, "Print the paths of the outputs and write nothing");
    CLI::Option *dump = app.add_option("--dump", o.dump, "Print a stage and write nothing")
                            ->check(CLI::IsMember({"tokens", "tree", "model"}))
                            ->option_text("tokens|tree|model");
    app.add_option("--scale", o.scale, "Add made-up rows up to the size of a whole stack build, or N per cent of it")
        ->check(CLI::IsMember({"full"}) | CLI::Range(1, 100))
        ->option_text("full|N");
    try {
        app.parse(argc, argv);
        if (out->empty() && dump->empty())
            throw CLI::RequiredError("-o or --dump");
    } catch (const CLI::ParseError &e) {
        return app.exit(e) == 0 ? exit_done : exit_usage;
    }
    while (o.db.size() > 1 && o.db.ends_with('/'))
        o.db.pop_back();
    return run(o);
}
