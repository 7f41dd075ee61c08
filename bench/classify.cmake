solvane_bench(bench_classify classify.cpp LIBS solvane_core)
