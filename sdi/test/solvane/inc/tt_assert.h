// Broken invariants: the one way in which the library ends the process with a text of its own.
#pragma once

/// Writes `Assertion failed: <expression>, file <unit>, line <line>` and a line end to standard error and aborts.
/// `unit` and `line` are the documented ones where there are any, so that a report can be matched across builds.
[[noreturn]] void tt_assert_failed(const char *expression, const char *unit, int line);

/// Ends the process through tt_assert_failed unless `holds`.
inline void tt_assert(bool holds, const char *expression, const char *unit, int line)
{
    if (!holds) [[unlikely]]
        tt_assert_failed(expression, unit, line);
}
