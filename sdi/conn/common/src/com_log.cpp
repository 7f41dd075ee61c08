// The recorder of what is sent.
#include "com_log.h"

#include <cstdio>
#include <cstring>

namespace {

constexpr std::size_t max_name = 512;
constexpr std::size_t max_directory = 260;

std::FILE *recording;
bool       asked;

bool switched_on()
{
    const char *value = pf_setting("LogelDebug");
    return value != nullptr && value[0] == '1';
}

/// The directory with its separator, or an empty text.
void put_directory(char (&directory)[max_directory + 1])
{
    const char *value = pf_setting("LogelDir");
    if (value != nullptr && value[0] != '\0')
        std::snprintf(directory, sizeof directory, "%.*s%c", static_cast<int>(max_directory - 1), value,
                      pf_path_separator);
    else
        directory[0] = '\0';
}

void build_name(char (&name)[max_name])
{
    char directory[max_directory + 1];
    put_directory(directory);
    const char  *program = pf_setting("LogelProgram");
    if (program == nullptr)
        program = "";
    pf_date_time now;
    com_log_time(&now);
    std::snprintf(name, sizeof name, "%smssim_%s%s%02d_%02d_%02d_%02d_%03d.logel", directory, program,
                  program[0] == '\0' ? "" : "--", now.day, now.hour, now.minute, now.second, now.millisecond);
}

void open_recording()
{
    asked = true;
    if (!switched_on())
        return;
    char name[max_name];
    build_name(name);
    recording = std::fopen(name, "w+b");
}

} // namespace

void com_log_packet(const std::uint8_t *data, std::uint32_t length)
{
    if (!asked)
        open_recording();
    if (recording == nullptr)
        return;
    std::fwrite(&length, sizeof length, 1, recording);
    if (length != 0)
        std::fwrite(data, 1, length, recording);
}

void com_log_time(pf_date_time *out)
{
    static const std::uint64_t frequency = pf_counter_frequency();
    static std::uint64_t       base_time;
    static std::uint64_t       base_counter;
    if (base_time == 0) {
        // The system's time moves in steps; right after a step it is exact.
        const std::uint64_t before = pf_system_time();
        do {
            base_time = pf_system_time();
            base_counter = pf_counter();
        } while (base_time == before);
    }
    constexpr double units_a_second = 1e7;
    const auto       passed = static_cast<double>(pf_counter() - base_counter) / static_cast<double>(frequency);
    *out = pf_to_date_time(base_time + static_cast<std::uint64_t>(passed * units_a_second));
}

bool com_log_trace_enabled()
{
    static const bool enabled = [] {
        const char *value = pf_setting("EnableTrace");
        return value == nullptr || value[0] != '0';
    }();
    return enabled;
}
