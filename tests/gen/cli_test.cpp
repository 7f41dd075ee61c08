// The tool as a build calls it: exit codes, what it prints where, what it writes and when.
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/wait.h>

#include <gtest/gtest.h>

#include "harness.h"

namespace solvane::gen::test {
namespace {

namespace fs = std::filesystem;

struct result {
    int         status = -1;
    std::string out;
    std::string error;
};

class cli : public testing::Test {
protected:
    void SetUp() override
    {
        std::string name = (fs::temp_directory_path() / "solvane-gen-XXXXXX").string();
        root_ = mkdtemp(name.data());
        write_case("struct a_struct { char a; }\n");
    }
    void TearDown() override { fs::remove_all(root_); }

    void write_case(const std::string &text)
    {
        for (const input_file &input : make_case(text).inputs) {
            fs::create_directories((root_ / "db" / input.path).parent_path());
            std::ofstream(root_ / "db" / input.path) << input.text;
        }
    }

    /// Runs the tool in the folder of the test.
    result run(const std::string &arguments) const
    {
        const std::string command = "cd '" + root_.string() + "' && '" SOLVANE_GEN_TOOL "' " + arguments +
                                    " >stdout.txt 2>stderr.txt";
        const int         status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, read_text(root_ / "stdout.txt"),
                read_text(root_ / "stderr.txt")};
    }

    fs::path root_;
};

TEST_F(cli, writes_the_outputs_that_it_lists_and_what_they_depend_on)
{
    const result listed = run("--db db -o out --list-outputs");
    EXPECT_EQ(listed.status, 0) << listed.error;
    EXPECT_FALSE(fs::exists(root_ / "out"));

    const result written = run("--db db -o out --depfile dep/gen.d");
    EXPECT_EQ(written.status, 0) << written.error;
    EXPECT_EQ(written.out + written.error, "");
    const std::string  depfile = read_text(root_ / "dep/gen.d");
    std::istringstream paths(listed.out);
    std::size_t        count = 0;
    for (std::string path; std::getline(paths, path); ++count) {
        EXPECT_TRUE(fs::exists(root_ / path)) << path;
        EXPECT_LT(depfile.find(path), depfile.find(": \\\n")) << path;
    }
    EXPECT_GT(count, 0u);
    for (const char *input : {"\n  db ", "\n  db/stack ", "\n  db/stack/case.def ", "\n  db/traces/modules.tsv\n"})
        EXPECT_NE(depfile.find(input), std::string::npos) << input << "\n" << depfile;
}

/// A folder that holds a schema of one type, and what may stand for it.
class cli_schema : public cli {
protected:
    void SetUp() override
    {
        cli::SetUp();
        for (const char *unit : {"common/base_types.def", "common/asn_types.def"})
            fs::copy_file(fs::path(SOLVANE_GEN_DB) / unit, root_ / "db" / unit,
                          fs::copy_options::overwrite_existing);
        write("db/nr/own.asn", "Own DEFINITIONS AUTOMATIC TAGS ::= BEGIN Mine ::= BOOLEAN END");
        write("other.txt", "First DEFINITIONS AUTOMATIC TAGS ::= BEGIN A ::= SEQUENCE { a BOOLEAN, b BOOLEAN } END\n"
                           "Second DEFINITIONS AUTOMATIC TAGS ::= BEGIN B ::= NULL END\n");
    }

    void write(const std::string &path, const std::string &text) const
    {
        fs::create_directories((root_ / path).parent_path());
        std::ofstream(root_ / path) << text;
    }
};

TEST_F(cli_schema, takes_another_schema_and_only_the_modules_that_are_named)
{
    const std::string own = run("--db db --dump=model").out;
    EXPECT_NE(own.find("Nr_Mine"), std::string::npos);
    const std::string all = run("--db db --dump=model --schema nr=other.txt").out;
    EXPECT_EQ(all.find("Nr_Mine"), std::string::npos);
    EXPECT_NE(all.find("codec other.txt:1 Nr_A"), std::string::npos);
    EXPECT_NE(all.find("Nr_B"), std::string::npos);
    EXPECT_EQ(run("--db db --dump=model --schema nr=other.txt:First").out.find("Nr_B"), std::string::npos);

    EXPECT_EQ(run("--db db --dump=model --schema nr=missing.asn").status, 3);
    EXPECT_EQ(run("--db db --dump=model --schema gsm=other.txt").status, 2);
    EXPECT_NE(run("--db db --dump=model --schema nr=other.txt:Third").error.find("there is no module 'Third'"),
              std::string::npos);
}

TEST_F(cli_schema, asserts_the_sizes_of_a_table)
{
    const std::string head = "type\tilp32\tlp64\tmodule\n";
    write("sizes.tsv", head + "Nr_A\t2\t2\tFirst\nElse\t4\t4\tElsewhere\n");
    ASSERT_EQ(run("--db db -o out --schema nr=other.txt --record-sizes sizes.tsv --depfile out.d").status, 0);
    EXPECT_NE(read_text(root_ / "out/production/nr_record_sizes.cpp").find("HAS_SIZE(Nr_A, 2, 2);"),
              std::string::npos);
    for (const char *input : {" other.txt", " sizes.tsv"})
        EXPECT_NE(read_text(root_ / "out.d").find(input), std::string::npos) << input;

    write("sizes.tsv", head + "Nr_A\t2\tmany\tFirst\nNr_C\t1\t1\tFirst\n");
    const result told = run("--db db -o out --schema nr=other.txt --record-sizes sizes.tsv");
    EXPECT_EQ(told.status, 1);
    EXPECT_NE(told.error.find("sizes.tsv:2:8: error: 'many' is no size"), std::string::npos) << told.error;
    EXPECT_NE(told.error.find("sizes.tsv:3:1: error: module 'First' has no type 'Nr_C'"), std::string::npos);
    EXPECT_EQ(run("--db db -o out --record-sizes missing.tsv").status, 3);
}

TEST_F(cli, an_output_that_stays_the_same_keeps_its_time)
{
    ASSERT_EQ(run("--db db -o out").status, 0);
    const auto old = fs::file_time_type::clock::now() - std::chrono::hours(1);
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(root_ / "out")) {
        if (entry.is_regular_file())
            fs::last_write_time(entry.path(), old);
    }
    write_case("struct a_struct { char a; char b; }\n");
    ASSERT_EQ(run("--db db -o out").status, 0);
    std::size_t kept = 0, renewed = 0;
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(root_ / "out")) {
        if (entry.is_regular_file())
            ++(fs::last_write_time(entry.path()) == old ? kept : renewed);
    }
    EXPECT_GT(renewed, 0u);
    EXPECT_GT(kept, renewed);
}

TEST_F(cli, errors_go_to_standard_error_and_nothing_is_written)
{
    write_case("struct a_struct {\n    missing_t a;\n}\n");
    const result r = run("--db db/ -o out --depfile gen.d");
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.error, "db/stack/case.def:2:5: error: unknown type 'missing_t'\n"
                       "        missing_t a;\n"
                       "        ^\n");
    EXPECT_FALSE(fs::exists(root_ / "out"));
    EXPECT_FALSE(fs::exists(root_ / "gen.d"));
}

TEST_F(cli, usage_errors_end_with_2)
{
    for (const char *arguments : {"", "--db db", "--db nowhere -o out", "-o out", "--db db -o out --unknown",
                                  "--db db --dump=code", "--db db -o out --scale 0", "--db db -o out --scale half"}) {
        const result r = run(arguments);
        EXPECT_EQ(r.status, 2) << arguments;
        EXPECT_EQ(r.out, "") << arguments;
        EXPECT_NE(r.error, "") << arguments;
    }
}

TEST_F(cli, help_and_version_go_to_standard_output)
{
    EXPECT_EQ(run("--help").status, 0);
    EXPECT_EQ(run("--help").out.find("Examples:"), 0u);
    EXPECT_EQ(run("-V").status, 0);
    EXPECT_EQ(run("-V").out.find("solvane-gen "), 0u);
}

TEST_F(cli, an_output_directory_that_cannot_be_made_ends_with_3)
{
    std::ofstream(root_ / "file") << "in the way";
    const result r = run("--db db -o file/out");
    EXPECT_EQ(r.status, 3);
    EXPECT_NE(r.error.find("cannot write 'file/out/"), std::string::npos) << r.error;
}

TEST_F(cli, dumps_a_stage_and_writes_nothing)
{
    const struct {
        const char *stage, *text;
    } rows[] = {
        {"tokens", "== stack/case.def\n1:1 identifier struct\n"},
        {"tree", "== stack/case.def\nstruct a_struct {\n    char a;\n}\n"},
        {"model", "unit stack/case.def\nstruct a_struct\n    char a plain\n"},
    };
    for (const auto &row : rows) {
        const result r = run(std::string("--db db -o out --dump=") + row.stage);
        EXPECT_EQ(r.status, 0) << row.stage;
        EXPECT_NE(r.out.find(row.text), std::string::npos) << r.out;
        EXPECT_FALSE(fs::exists(root_ / "out")) << row.stage;
    }
}

TEST_F(cli, output_does_not_depend_on_locale_or_folder)
{
    ASSERT_EQ(run("--db db -o one").status, 0);
    ASSERT_EQ(run("--db ../" + root_.filename().string() + "/db -o two").status, 0);
    const std::string compare = "diff -r '" + (root_ / "one").string() + "' '" + (root_ / "two").string() + "'";
    EXPECT_EQ(std::system(compare.c_str()), 0);
}

} // namespace
} // namespace solvane::gen::test
