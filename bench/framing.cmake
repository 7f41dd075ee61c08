solvane_bench(bench_framing framing.cpp LIBS solvane_core)
solvane_bench(bench_framing_loopback framing_loopback.cpp LIBS solvane_core)
