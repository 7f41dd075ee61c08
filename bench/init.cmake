solvane_bench(bench_init init.cpp LIBS ${CMAKE_DL_LIBS})
target_compile_definitions(bench_init PRIVATE SOLVANE_PLUGIN="$<TARGET_FILE:solvane>")
add_dependencies(bench_init solvane)
