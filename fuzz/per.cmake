solvane_fuzz(per_string_fuzz per_string_fuzz.cpp LIBS solvane_core)
solvane_fuzz(per_number_fuzz per_number_fuzz.cpp LIBS solvane_core)
target_include_directories(per_string_fuzz PRIVATE ${PROJECT_SOURCE_DIR}/tests/asn)
target_include_directories(per_number_fuzz PRIVATE ${PROJECT_SOURCE_DIR}/tests/asn)
