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

#include "asn1/dump_tree.h"
#include "asn1/folder.h"
#include "asn1/lex.h"
#include "base/diagnostics.h"
#include "base/input.h"
#include "base/output.h"
#include "def/lex.h"
#include "def/parse.h"
#include "emit/emit.h"
#include "model/dump.h"
#include "model/model.h"
#include "model/record_sizes.h"
#include "model/rows.h"
#include "model/scale.h"
#include "stages.h"

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
    std::vector<std::string> schemas;
    std::vector<std::string> record_sizes;
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
        if (input.path.ends_with(".tsv"))
            continue;
        const std::uint32_t file = diag.add_file(input.path, input.text);
        out += fmt::format("== {}\n", input.path);
        out += input.path.ends_with(".asn") ? asn1::dump_tokens(asn1::lex(diag, file))
                                            : def::dump_tokens(def::lex(diag, file));
    }
    return out;
}

std::string dump_all_trees(const parsed_folder &parsed)
{
    const def::folder_def &folder = parsed.definitions;
    std::string            out;
    if (folder.baseline)
        out += "== baseline.def\n" + def::dump_tree(*folder.baseline);
    if (folder.peers)
        out += "== peers.def\n" + def::dump_tree(*folder.peers);
    for (const def::unit_def &unit : folder.units)
        out += fmt::format("== {}\n", unit.path) + def::dump_tree(unit);
    for (const def::values_def &values : folder.values)
        out += fmt::format("== {}\n", values.path) + def::dump_tree(values);
    for (const asn1::domain_schema &schema : parsed.schemas) {
        out += fmt::format("== {}/*.asn\n", schema.domain);
        for (const asn1::module &m : schema.modules.modules)
            out += asn1::dump_tree(m);
    }
    return out;
}

/// What the outputs depend on: every file read, and the folders, which tell of files that come and go.
std::vector<std::string> dependencies(const std::string &root, const std::vector<input_file> &inputs)
{
    std::vector<std::string> paths = {root};
    for (const input_file &input : inputs) {
        if (!input.shown.empty()) // from elsewhere
            continue;
        const std::string parent = std::filesystem::path(root + "/" + input.path).parent_path().generic_string();
        if (std::find(paths.begin(), paths.end(), parent) == paths.end())
            paths.push_back(parent);
    }
    for (const input_file &input : inputs)
        paths.push_back(input.shown.empty() ? root + "/" + input.path : input.shown);
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

/// `domain=file[:module,module]`
asn1::replacement parse_replacement(const std::string &text)
{
    asn1::replacement out;
    const std::size_t equals = text.find('=');
    const std::size_t colon = text.rfind(':');
    out.domain = text.substr(0, equals);
    out.file = text.substr(equals + 1, colon == std::string::npos ? colon : colon - equals - 1);
    for (std::size_t at = colon; at != std::string::npos;) {
        const std::size_t end = text.find(',', at + 1);
        out.modules.push_back(text.substr(at + 1, end == std::string::npos ? end : end - at - 1));
        at = end;
    }
    return out;
}

std::vector<asn1::replacement> replacements(const options &o)
{
    std::vector<asn1::replacement> out;
    for (const std::string &text : o.schemas)
        out.push_back(parse_replacement(text));
    return out;
}

int run(const options &o)
{
    const std::vector<asn1::replacement>   schemas = replacements(o);
    std::string                            unreadable;
    std::optional<std::vector<input_file>> inputs = read_folder(o.db, unreadable);
    if (!inputs || !asn1::replace_schemas(*inputs, schemas, unreadable))
        return fail(fmt::format("cannot read '{}'", unreadable));

    std::vector<input_file> read_sizes;
    for (const std::string &path : o.record_sizes) {
        std::optional<input_file> sizes = read_input(path);
        if (!sizes)
            return fail(fmt::format("cannot read '{}'", path));
        read_sizes.push_back(std::move(*sizes));
    }

    diagnostics diag;
    if (o.dump == "tokens") {
        std::cout << dump_all_tokens(diag, *inputs);
        return diag.failed() ? tell(diag) : exit_done;
    }

    parsed_folder tree = parse_all(diag, *inputs, schemas, o.db + "/");
    if (o.dump == "tree")
        std::cout << dump_all_trees(tree);
    if (diag.failed())
        return tell(diag);
    if (o.dump == "tree")
        return exit_done;

    model m = lower_all(diag, std::move(tree));
    if (diag.failed())
        return tell(diag);
    for (input_file &sizes : read_sizes) {
        inputs->push_back({sizes.path, {}, sizes.shown}); // the outputs depend on it
        read_record_sizes(diag, diag.add_file(sizes.shown, std::move(sizes.text)), m);
    }
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
    app.add_option("--schema", o.schemas,
                   "Take the ASN.1 types of a domain from this file in place of the folder's, of these modules alone")
        ->check([](const std::string &text) {
            const std::size_t equals = text.find('=');
            const bool        known = asn1::family_of(text.substr(0, equals)) != nullptr;
            return equals != std::string::npos && known ? "" : "wants lte=, nr= or umts= and a file";
        })
        ->option_text("DOMAIN=FILE[:MODULE,...]");
    app.add_option("--record-sizes", o.record_sizes, "Assert the sizes of ASN.1 records that this table tells")
        ->option_text("FILE");
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
