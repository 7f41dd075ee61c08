solvane_bench(bench_framing framing.cpp LIBS solvane_core)
