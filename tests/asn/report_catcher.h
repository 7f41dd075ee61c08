// Catches what the run-time reports, and its calls of the exit slot; puts sink and slots back at the end.
#pragma once

#include <string>
#include <vector>

#include "asn_report.h"
#include "solvane/solvane.h"

struct report_catcher {
    struct report {
        std::string text;
        int         severity;
        bool        operator==(const report &) const = default;
    };
    inline static std::vector<report> reports;
    inline static std::vector<int>    exits; // statuses; the slot returns

    dll_info_version_struct slots = dll_info_version;
    AsnErrorHandler         sink;

    report_catcher()
    {
        reports.clear();
        exits.clear();
        sink = AsnSetErrorHandler([](const char *text, int severity) { reports.push_back({text, severity}); });
        dll_info_version.exit = [](int status) { exits.push_back(status); };
    }
    ~report_catcher()
    {
        AsnSetErrorHandler(sink);
        dll_info_version = slots;
    }
    report_catcher(const report_catcher &)            = delete;
    report_catcher &operator=(const report_catcher &) = delete;

    // All reports since the start, or since the last call, one behind the other.
    static std::string take_text()
    {
        std::string text;
        for (const report &report : reports)
            text += report.text;
        reports.clear();
        return text;
    }
};
