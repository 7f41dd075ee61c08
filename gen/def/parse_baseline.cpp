// Recursive descent over `baseline.def` and `peers.def`.
#include "def/parse.h"
#include "def/parser.h"

namespace solvane::gen::def {
namespace {

// module_row = number [ "." number ] ":" name ";" ;
module_row_def parse_module_row(parser &in)
{
    module_row_def row;
    row.where = in.peek().where;
    row.module = in.expect_number("the number of a module");
    if (in.accept("."))
        row.machine = in.expect_number("the number of a state machine");
    in.expect(":", "the number");
    row.enumeration = in.expect_identifier("an enumeration");
    in.expect_semicolon("the enumeration");
    return row;
}

// domain_row = "indexed" ";" | name name ";" | name "{" { module_row } "}" [ ";" ] ;
void parse_domain_row(parser &in, domain_def &domain)
{
    const name key = in.expect_identifier("a row of the domain");
    if (in.is("{")) {
        module_table_def table{key, {}};
        parse_block(in, "the table", [&] { table.rows.push_back(parse_module_row(in)); });
        in.accept(";");
        domain.tables.push_back(std::move(table));
    } else if (key.text == "indexed") {
        domain.indexed.push_back(key);
        in.expect_semicolon("'indexed'");
    } else {
        domain.rows.push_back({key, in.expect_identifier("a name or a table")});
        in.expect_semicolon("the row");
    }
}

// baseline_statement = "baseline" text ";" | "version" text ";" | "variables" name ";" | "entities" name ";"
//                    | "domain" name "{" { domain_row } "}" [ ";" ] ;
void parse_baseline_statement(parser &in, baseline_def &baseline)
{
    if (in.accept_word("baseline")) {
        baseline.baseline.push_back(in.expect_text("a text in double quotes"));
        in.expect_semicolon("the text");
    } else if (in.accept_word("version")) {
        baseline.version.push_back(in.expect_text("a text in double quotes"));
        in.expect_semicolon("the text");
    } else if (in.accept_word("variables")) {
        baseline.variables.push_back(in.expect_identifier("a structure"));
        in.expect_semicolon("the structure");
    } else if (in.accept_word("entities")) {
        baseline.entities.push_back(in.expect_identifier("an enumeration"));
        in.expect_semicolon("the enumeration");
    } else if (in.accept_word("domain")) {
        domain_def domain;
        domain.id = in.expect_identifier("the name of a domain");
        parse_block(in, "the domain", [&] { parse_domain_row(in, domain); });
        in.accept(";");
        baseline.domains.push_back(std::move(domain));
    } else {
        in.fail("'baseline', 'version', 'variables', 'entities' or 'domain'");
    }
}

// peer_function = ( "pack" | "unpack" ) name ";" ;
void parse_peer_function(parser &in, peer_row_def &row)
{
    if (!in.is_word("pack") && !in.is_word("unpack"))
        in.fail("'pack' or 'unpack'");
    const token &word = in.next();
    name        &function = word.text == "pack" ? row.pack : row.unpack;
    if (!function.text.empty())
        in.diag.conflict(word.where, "'" + word.text + "' stands here twice", function.where, "the first");
    function = in.expect_identifier("the name of a function");
    in.expect_semicolon("the function");
}

// peer = name ( ";" | "{" peer_function peer_function "}" [ ";" ] ) ;
peer_row_def parse_peer(parser &in)
{
    peer_row_def row;
    row.structure = in.expect_identifier("the name of a structure");
    if (in.accept(";"))
        return row;
    const std::size_t errors = in.diag.count();
    parse_block(in, "the structure", [&] { parse_peer_function(in, row); });
    in.accept(";");
    if (in.diag.count() == errors && (row.pack.text.empty() || row.unpack.text.empty()))
        in.diag.error(row.structure.where, "'" + row.structure.text + "' wants a pack and an unpack function");
    return row;
}

// family = "family" name "{" { peer } "}" [ ";" ] ;
peer_family_def parse_family(parser &in)
{
    peer_family_def family;
    in.expect_word("family");
    family.id = in.expect_identifier("the name of a family");
    parse_block(in, "the family", [&] { family.rows.push_back(parse_peer(in)); });
    in.accept(";");
    return family;
}

} // namespace

// baseline = { baseline_statement } ;
baseline_def parse_baseline(diagnostics &diag, const std::vector<token> &tokens, std::uint32_t file)
{
    baseline_def baseline;
    baseline.file = file;
    parser in{diag, tokens};
    parse_file(in, [&] { parse_baseline_statement(in, baseline); });
    return baseline;
}

// peers = { family } ;
peers_def parse_peers(diagnostics &diag, const std::vector<token> &tokens, std::uint32_t file)
{
    peers_def peers;
    peers.file = file;
    parser in{diag, tokens};
    parse_file(in, [&] { peers.families.push_back(parse_family(in)); });
    return peers;
}

} // namespace solvane::gen::def
