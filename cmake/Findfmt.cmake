# Finds the headers of fmt alone.  The tools use it header-only, and its package files stand beside the library, where
# a build for another word size does not look.  Gives fmt::fmt-header-only.

find_path(FMT_INCLUDE_DIR fmt/format.h)
mark_as_advanced(FMT_INCLUDE_DIR)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(fmt REQUIRED_VARS FMT_INCLUDE_DIR)

if(fmt_FOUND AND NOT TARGET fmt::fmt-header-only)
    add_library(fmt::fmt-header-only INTERFACE IMPORTED)
    target_include_directories(fmt::fmt-header-only INTERFACE ${FMT_INCLUDE_DIR})
    target_compile_definitions(fmt::fmt-header-only INTERFACE FMT_HEADER_ONLY=1)
endif()
