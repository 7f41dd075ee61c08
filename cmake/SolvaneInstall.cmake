# What a host author and a stack team get: the plug-in, its header, the generator with solvane_generate(), and the
# files by which CMake and pkg-config find them.

include(CMakePackageConfigHelpers)

set(SOLVANE_PLUGIN_DIR ${CMAKE_INSTALL_LIBDIR}/solvane)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/solvane)

install(TARGETS solvane LIBRARY DESTINATION ${SOLVANE_PLUGIN_DIR})
if(NOT SOLVANE_GENERATOR)
    install(TARGETS solvane-gen RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
install(FILES include/solvane/solvane.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/solvane)
install(FILES cmake/SolvaneGenerate.cmake DESTINATION ${package_dir})

configure_package_config_file(cmake/solvane-config.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/solvane-config.cmake
    INSTALL_DESTINATION ${package_dir}
    PATH_VARS CMAKE_INSTALL_INCLUDEDIR CMAKE_INSTALL_BINDIR SOLVANE_PLUGIN_DIR)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/solvane-config-version.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/solvane-config.cmake ${CMAKE_CURRENT_BINARY_DIR}/solvane-config-version.cmake
    DESTINATION ${package_dir})

configure_file(cmake/solvane.pc.in ${CMAKE_CURRENT_BINARY_DIR}/solvane.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/solvane.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
