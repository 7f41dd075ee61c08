// Broken invariants.  May be called from any thread.
#include "tt_assert.h"

#include <cstdio>
#include <cstdlib>

void tt_assert_failed(const char *expression, const char *unit, int line)
{
    std::fprintf(stderr, "Assertion failed: %s, file %s, line %d\n", expression, unit, line);
    std::abort();
}
