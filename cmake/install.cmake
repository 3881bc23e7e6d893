# Installation: the headers unchanged, both libraries, the pkg-config file and the CMake package.
include(CMakePackageConfigHelpers)

install(TARGETS zelvane EXPORT zelvaneTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS zelvane_static EXPORT zelvaneTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
foreach(header ${zelvane_headers})
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${folder})
endforeach()

# The prefix is known only at installation: `cmake --install --prefix` can change it.
set(zelvane_prefix "@CMAKE_INSTALL_PREFIX@")
configure_file(${CMAKE_CURRENT_LIST_DIR}/zelvane.pc.in zelvane.pc.in @ONLY)
install(CODE "configure_file(\"${CMAKE_BINARY_DIR}/zelvane.pc.in\" \"${CMAKE_BINARY_DIR}/zelvane.pc\" @ONLY)")
install(FILES ${CMAKE_BINARY_DIR}/zelvane.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

set(zelvane_package ${CMAKE_INSTALL_LIBDIR}/cmake/zelvane)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/zelvaneConfig.cmake.in zelvaneConfig.cmake
                              INSTALL_DESTINATION ${zelvane_package})
write_basic_package_version_file(zelvaneConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/zelvaneConfig.cmake ${CMAKE_BINARY_DIR}/zelvaneConfigVersion.cmake
        DESTINATION ${zelvane_package})
install(EXPORT zelvaneTargets NAMESPACE zelvane:: DESTINATION ${zelvane_package})

file(GLOB zelvane_manuals CONFIGURE_DEPENDS RELATIVE ${CMAKE_SOURCE_DIR}/man man/*.[35])
foreach(manual ${zelvane_manuals})
  string(REGEX MATCH "[35]$" section ${manual})
  install(FILES man/${manual} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section})
endforeach()
