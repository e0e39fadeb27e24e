# Header, libraries, pkg-config file and CMake package.
include(CMakePackageConfigHelpers)

add_library(fathom::fathom ALIAS fathom)
set_target_properties(fathom_static PROPERTIES EXPORT_NAME static)
install(TARGETS fathom fathom_static EXPORT fathomTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES include/fathom.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(package ${CMAKE_INSTALL_LIBDIR}/cmake/fathom)
install(EXPORT fathomTargets NAMESPACE fathom:: FILE fathomTargets.cmake DESTINATION ${package})
configure_package_config_file(cmake/fathomConfig.cmake.in fathomConfig.cmake INSTALL_DESTINATION ${package})
write_basic_package_version_file(fathomConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/fathomConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/fathomConfigVersion.cmake DESTINATION ${package})

# Relative, so that the installed tree can be moved.
file(RELATIVE_PATH FATHOM_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/fathom.pc.in fathom.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/fathom.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
