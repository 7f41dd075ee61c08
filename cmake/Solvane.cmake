# Flags and helpers that every part of the build shares.

set(SOLVANE_SANITIZE "" CACHE STRING "Sanitizers, as for -fsanitize=")

add_library(solvane_flags INTERFACE)
target_compile_options(solvane_flags INTERFACE -Wall -Wextra -Wconversion -fvisibility=hidden)
target_include_directories(solvane_flags INTERFACE
    ${PROJECT_SOURCE_DIR}/include
    ${PROJECT_SOURCE_DIR}/asn
    ${PROJECT_SOURCE_DIR}/log_diag/tsc
    ${PROJECT_SOURCE_DIR}/platform
    ${PROJECT_SOURCE_DIR}/sdi/test/solvane/inc
    ${PROJECT_SOURCE_DIR}/sdi/test/dll/inc
    ${PROJECT_SOURCE_DIR}/sdi/conn/common/inc
    ${PROJECT_SOURCE_DIR}/sdi/conn/tcp/inc
    ${PROJECT_SOURCE_DIR}/stack/common/debug_support/stack/common/inc
    ${PROJECT_SOURCE_DIR}/stack/common/debug_support/td_lte_stack/common/inc)
if(SOLVANE_SANITIZE)
    target_compile_options(solvane_flags INTERFACE
        -fsanitize=${SOLVANE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(solvane_flags INTERFACE -fsanitize=${SOLVANE_SANITIZE})
endif()

# The hand-written and generated code of the plug-in: plain records and functions, nothing of it throws.
add_library(solvane_runtime_flags INTERFACE)
target_link_libraries(solvane_runtime_flags INTERFACE solvane_flags)
target_compile_options(solvane_runtime_flags INTERFACE
    $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti> -fno-strict-aliasing)

# solvane_part(name source...): an object library that goes into the plug-in and into solvane_core.
function(solvane_part name)
    add_library(${name} OBJECT ${ARGN})
    target_link_libraries(${name} PUBLIC solvane_runtime_flags)
    set_property(GLOBAL APPEND PROPERTY SOLVANE_PARTS ${name})
endfunction()
