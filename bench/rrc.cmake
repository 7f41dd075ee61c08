# The measured messages need types of the complete modules.
if(SOLVANE_RRC_SCHEMAS)
    add_executable(rrc_bench rrc.cpp rrc_messages.cpp ${PROJECT_SOURCE_DIR}/tests/rrc/whole_strings.cpp)
    target_link_libraries(rrc_bench PRIVATE solvane_flags solvane_generated_headers solvane_core)
    target_link_options(rrc_bench PRIVATE
        -Wl,--wrap=_Z13AsnOcts_printPK7AsnOctsP10AsnTextBuft -Wl,--wrap=_Z13AsnBits_printPK7AsnBitsP10AsnTextBuft)
endif()
