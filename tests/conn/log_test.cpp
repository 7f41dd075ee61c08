// The recorder: when it records, under which name, each octet, and that it keeps silent when it cannot.
//
// It decides once a process, so each case runs in a child.
#include <csignal>
#include <regex.h>
#include <sys/resource.h>

#include <ctime>
#include <iterator>

#include "com_log.h"
#include "loopback.h"

namespace {

namespace fs = std::filesystem;

bool matches(const std::string &text, const std::string &expression)
{
    regex_t compiled{};
    EXPECT_EQ(regcomp(&compiled, expression.c_str(), REG_EXTENDED | REG_NOSUB), 0);
    const bool result = regexec(&compiled, text.c_str(), 0, nullptr, 0) == 0;
    regfree(&compiled);
    return result;
}

class log_file : public channels {
  protected:
    log_file()
    {
        testing::FLAGS_gtest_death_test_style = "fast"; // a case looks at what its children left
        std::string name = testing::TempDir() + "logelXXXXXX";
        folder_ = mkdtemp(name.data());
    }
    ~log_file() override { fs::remove_all(folder_); }

    struct settings {
        const char *debug;
        const char *directory;
        const char *program;
    };

    /// In a child: sends three packets over a channel without a peer, and ends the process.
    void record_with(const settings &with)
    {
        fs::current_path(folder_);
        const auto set = [](const char *name, const char *value) {
            value == nullptr ? unsetenv(name) : setenv(name, value, 1);
        };
        set("LogelDebug", with.debug);
        set("LogelDir", with.directory);
        set("LogelProgram", with.program);
        open(tcp(true, 0));
        write({0x7E, 1, 0x7D});
        setenv("LogelDebug", "1", 1); // too late to be asked
        write(octets(300, 9));
        write({7});
        std::exit(0);
    }

    /// The files that have come, with their names below the folder; takes them away.
    std::vector<std::pair<std::string, octets>> take_files()
    {
        std::vector<std::pair<std::string, octets>> files;
        for (const auto &entry : fs::recursive_directory_iterator(folder_))
            if (entry.is_regular_file()) {
                std::ifstream file(entry.path(), std::ios::binary);
                files.emplace_back(fs::relative(entry.path(), folder_).string(),
                                   octets(std::istreambuf_iterator<char>(file), {}));
                fs::remove(entry.path());
            }
        return files;
    }

    /// What the packets of record_with are in a file.
    static octets content()
    {
        octets whole;
        for (const octets &packet : {octets{0x7E, 1, 0x7D}, octets(300, 9), octets{7}}) {
            const auto  length = static_cast<std::uint32_t>(packet.size());
            const auto *first = reinterpret_cast<const std::uint8_t *>(&length);
            whole.insert(whole.end(), first, first + sizeof length);
            whole.insert(whole.end(), packet.begin(), packet.end());
        }
        return whole;
    }

    std::string folder_;
};

TEST_F(log_file, is_written_when_the_settings_say_so)
{
    fs::create_directory(folder_ + "/sub");
    const std::string stamp = "[0-3][0-9]_[0-2][0-9]_[0-5][0-9]_[0-6][0-9]_[0-9]{3}\\.logel$";
    const struct {
        const char *name;
        settings    with;
        std::string file; ///< empty: none
    } cases[] = {
        {"no setting", {nullptr, nullptr, nullptr}, ""},
        {"off", {"0", nullptr, nullptr}, ""},
        {"empty", {"", nullptr, nullptr}, ""},
        {"a word", {"yes", nullptr, nullptr}, ""},
        {"on", {"1", nullptr, nullptr}, "^mssim_" + stamp},
        {"the first character decides", {"11", "", ""}, "^mssim_" + stamp},
        {"a folder", {"1", "sub", nullptr}, "^sub/mssim_" + stamp},
        {"a program", {"1", "sub", "host"}, "^sub/mssim_host--" + stamp},
        {"a folder that is not there", {"1", "nowhere", nullptr}, ""},
        {"a folder that may not be written", {"1", "/proc", nullptr}, ""},
    };
    for (const auto &row : cases) {
        SCOPED_TRACE(row.name);
        EXPECT_EXIT(record_with(row.with), testing::ExitedWithCode(0), "^$");
        const auto files = take_files();
        ASSERT_EQ(files.size(), row.file.empty() ? 0U : 1U);
        if (files.empty())
            continue;
        EXPECT_TRUE(matches(files[0].first, row.file)) << files[0].first;
        EXPECT_EQ(files[0].second, content());
    }
}

TEST_F(log_file, keeps_silent_when_there_is_no_room)
{
    const auto on_a_full_disk = [this] {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit none = {0, 0};
        setrlimit(RLIMIT_FSIZE, &none);
        record_with({"1", nullptr, nullptr});
    };
    EXPECT_EXIT(on_a_full_disk(), testing::ExitedWithCode(0), "^$");
    const auto files = take_files();
    ASSERT_EQ(files.size(), 1U);
    EXPECT_TRUE(files[0].second.empty());
}

TEST_F(log_file, holds_a_packet_that_stops_the_process)
{
    const auto write_nothing = [this] {
        setenv("LogelDebug", "1", 1);
        fs::current_path(folder_);
        com_log_packet(nullptr, 0);
        std::exit(0);
    };
    EXPECT_EXIT(write_nothing(), testing::ExitedWithCode(0), "^$");
    const auto files = take_files();
    ASSERT_EQ(files.size(), 1U);
    EXPECT_EQ(files[0].second, octets(4, 0));
}

/// Milliseconds since 1970-01-01 00:00 UTC.
std::int64_t milliseconds(const pf_date_time &time)
{
    std::tm parts{};
    parts.tm_year = time.year - 1900;
    parts.tm_mon = time.month - 1;
    parts.tm_mday = time.day;
    parts.tm_hour = time.hour;
    parts.tm_min = time.minute;
    parts.tm_sec = time.second;
    const std::time_t seconds = timegm(&parts);
    EXPECT_EQ(parts.tm_wday, time.day_of_week);
    return seconds * 1000LL + time.millisecond;
}

// The clock's base is taken where the system's coarse time steps, which is as much as 10 ms behind or beside.
TEST(log_time, follows_the_clock)
{
    constexpr std::int64_t step = 20;
    for (int n = 0; n < 3; ++n) {
        const auto   now = [] { return static_cast<std::int64_t>(pf_system_time() / 10000); };
        pf_date_time time;
        const auto   before = now();
        com_log_time(&time);
        EXPECT_GE(milliseconds(time), before - step);
        EXPECT_LE(milliseconds(time), now() + step);
    }
}

TEST(log_time, takes_a_time_apart)
{
    // 2024-02-29 was a Thursday.
    const pf_date_time time = pf_to_date_time(17091683990070000);
    EXPECT_EQ(milliseconds(time), 1709168399007);
    EXPECT_EQ(time.day, 29);
    EXPECT_EQ(time.month, 2);
    EXPECT_EQ(time.day_of_week, 4);
    EXPECT_EQ(time.millisecond, 7);
}

TEST(log_trace, is_on_unless_switched_off)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    for (const auto &[value, answer] : {std::pair{"0", 0}, {"01", 0}, {"1", 1}, {"", 1}, {"no", 1}}) {
        setenv("EnableTrace", value, 1);
        EXPECT_EXIT(std::exit(com_log_trace_enabled()), testing::ExitedWithCode(answer), "") << value;
    }
    unsetenv("EnableTrace");
    EXPECT_EXIT(std::exit(com_log_trace_enabled()), testing::ExitedWithCode(1), "");
}

} // namespace
