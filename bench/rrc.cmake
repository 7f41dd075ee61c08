# The measured messages need types of the complete modules.
if(SOLVANE_RRC_SCHEMAS)
    add_executable(rrc_bench rrc.cpp rrc_messages.cpp ${PROJECT_SOURCE_DIR}/tests/rrc/whole_strings.cpp)
    target_link_libraries(rrc_bench PRIVATE solvane_flags solvane_generated_headers solvane_core)
    solvane_rrc_codec_header(rrc_bench)
endif()
