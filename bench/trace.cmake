solvane_bench(bench_trace trace.cpp LIBS solvane_core)
