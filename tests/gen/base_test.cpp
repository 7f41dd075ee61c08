// Messages and the output sink.
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "base/diagnostics.h"
#include "base/input.h"
#include "base/output.h"
#include "harness.h"

namespace solvane::gen::test {
namespace {

namespace fs = std::filesystem;

/// A folder that is gone after the test.
struct temporary_folder {
    fs::path path;

    temporary_folder()
    {
        std::string name = (fs::temp_directory_path() / "solvane-gen-XXXXXX").string();
        path = mkdtemp(name.data());
    }
    ~temporary_folder() { fs::remove_all(path); }
};

TEST(diagnostics, shows_line_and_caret_in_the_order_of_the_places)
{
    diagnostics         d;
    const std::uint32_t a = d.add_file("db/a.def", "first\n\tsecond line\r\nlast");
    const std::uint32_t b = d.add_file("db/b.def", "other\n");
    d.error({b, 1, 3}, "in the other file");
    d.error({a, 3, 5}, "behind the last octet");
    d.conflict({a, 2, 9}, "clashes", {b, 1, 1}, "with this");
    d.error({a, 0, 0}, "the file itself");
    EXPECT_EQ(d.render(), "db/a.def: error: the file itself\n"
                          "db/a.def:2:9: error: clashes\n"
                          "    \tsecond line\n"
                          "    \t       ^\n"
                          "db/b.def:1:1: note: with this\n"
                          "    other\n"
                          "    ^\n"
                          "db/a.def:3:5: error: behind the last octet\n"
                          "    last\n"
                          "        ^\n"
                          "db/b.def:1:3: error: in the other file\n"
                          "    other\n"
                          "      ^\n");
}

TEST(diagnostics, tells_of_a_place_once)
{
    diagnostics         d;
    const std::uint32_t a = d.add_file("a", "text\n");
    d.error({a, 1, 1}, "the cause");
    d.conflict({a, 1, 1}, "what follows", {a, 1, 2}, "there");
    d.error({a, 1, 2}, "beside it");
    EXPECT_EQ(d.count(), 2u);
    EXPECT_EQ(d.render().find("what follows"), std::string::npos);
}

TEST(output, keeps_a_file_that_holds_its_text)
{
    const temporary_folder         folder;
    const std::vector<output_file> files = {{"one.h", "one"}, {"sub/two.cpp", "two"}};
    ASSERT_EQ(write_outputs(folder.path / "new", files), std::nullopt);
    const auto old = fs::file_time_type::clock::now() - std::chrono::hours(1);
    fs::last_write_time(folder.path / "new/one.h", old);
    fs::last_write_time(folder.path / "new/sub/two.cpp", old);

    ASSERT_EQ(write_outputs(folder.path / "new", {{"one.h", "one"}, {"sub/two.cpp", "TWO"}}), std::nullopt);
    EXPECT_EQ(fs::last_write_time(folder.path / "new/one.h"), old);
    EXPECT_NE(fs::last_write_time(folder.path / "new/sub/two.cpp"), old);
    EXPECT_EQ(read_text(folder.path / "new/sub/two.cpp"), "TWO");
}

TEST(output, names_the_file_that_cannot_be_written)
{
    const temporary_folder folder;
    std::ofstream(folder.path / "file") << "in the way";
    const std::optional<std::string> failed = write_outputs(folder.path / "file", {{"one.h", "one"}});
    ASSERT_TRUE(failed.has_value());
    EXPECT_NE(failed->find("file/one.h"), std::string::npos);
}

TEST(output, depfile_escapes_what_make_would_read)
{
    EXPECT_EQ(make_depfile({"out/a.h", "out/b c.h"}, {"db/a b", "db/#1", "db/$x"}),
              "out/a.h out/b\\ c.h: \\\n  db/a\\ b \\\n  db/\\#1 \\\n  db/$$x\n");
}

TEST(input, reads_definitions_of_two_levels_in_the_order_of_their_paths)
{
    const temporary_folder folder;
    const auto             write = [&](const std::string &path) {
        fs::create_directories((folder.path / path).parent_path());
        std::ofstream(folder.path / path) << path;
    };
    for (const char *path : {"b/z.def", "b/a.val", "b.def", "a/x.tsv", "a/x.asn", "a/deep/y.def", "README.md"})
        write(path);
    std::string       unreadable;
    const auto        files = read_folder(folder.path, unreadable);
    std::vector<std::string> paths;
    ASSERT_TRUE(files.has_value());
    for (const input_file &file : *files) {
        EXPECT_EQ(file.text, file.path);
        paths.push_back(file.path);
    }
    EXPECT_EQ(paths, (std::vector<std::string>{"a/x.asn", "a/x.tsv", "b.def", "b/a.val", "b/z.def"}));
}

TEST(input, names_the_folder_that_is_missing)
{
    std::string unreadable;
    EXPECT_FALSE(read_folder("/nowhere/at/all", unreadable).has_value());
    EXPECT_EQ(unreadable, "/nowhere/at/all");
}

} // namespace
} // namespace solvane::gen::test
