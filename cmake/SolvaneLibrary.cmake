# The plug-in itself and its static twin for tests, benchmarks and fuzzers.

get_property(parts GLOBAL PROPERTY SOLVANE_PARTS)
set(objects "")
foreach(part IN LISTS parts)
    list(APPEND objects $<TARGET_OBJECTS:${part}>)
endforeach()

set(exports ${PROJECT_SOURCE_DIR}/cmake/solvane.map)
add_library(solvane MODULE ${objects})
target_link_libraries(solvane PRIVATE solvane_runtime_flags)
set_target_properties(solvane PROPERTIES LINK_DEPENDS ${exports} LINKER_LANGUAGE CXX)
target_link_options(solvane PRIVATE
    -Wl,--version-script=${exports} -Wl,-z,nodelete -static-libstdc++ -static-libgcc)
if(NOT SOLVANE_SANITIZE)
    target_link_options(solvane PRIVATE -Wl,-z,defs)
endif()
if(SOLVANE_PACK_RELOCATIONS)
    include(CheckLinkerFlag)
    check_linker_flag(CXX -Wl,-z,pack-relative-relocs SOLVANE_LINKER_PACKS_RELOCATIONS)
    if(SOLVANE_LINKER_PACKS_RELOCATIONS)
        target_link_options(solvane PRIVATE -Wl,-z,pack-relative-relocs)
    endif()
endif()

add_library(solvane_core STATIC ${objects})
target_link_libraries(solvane_core PUBLIC solvane_flags)
set_target_properties(solvane_core PROPERTIES LINKER_LANGUAGE CXX)
