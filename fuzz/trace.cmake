# Has a tt_assert_failed of its own: a line too long ends the case and not the run.
solvane_fuzz(fuzz_trace trace.cpp LIBS solvane_core)
