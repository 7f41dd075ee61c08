solvane_bench(per_stream_bench per_stream.cpp LIBS solvane_core)
