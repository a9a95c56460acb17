# Headers, library, find_package(zebx) and pkg-config files.
include(CMakePackageConfigHelpers)

set(package_directory ${CMAKE_INSTALL_LIBDIR}/cmake/zebx)
install(TARGETS zebx EXPORT zebxTargets)
install(EXPORT zebxTargets NAMESPACE zebx:: DESTINATION ${package_directory})
configure_package_config_file(cmake/zebxConfig.cmake.in ${PROJECT_BINARY_DIR}/zebxConfig.cmake
                              INSTALL_DESTINATION ${package_directory})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zebxConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zebxConfig.cmake ${PROJECT_BINARY_DIR}/zebxConfigVersion.cmake
        DESTINATION ${package_directory})

# The pkg-config file names its prefix by its own place, so that an installation can be moved.
set(pkg_config_directory ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH ZEBX_PREFIX_FROM_PC ${pkg_config_directory} ${CMAKE_INSTALL_PREFIX})
file(RELATIVE_PATH ZEBX_LIBDIR ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH ZEBX_INCLUDEDIR ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
configure_file(cmake/zebx.pc.in ${PROJECT_BINARY_DIR}/zebx.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zebx.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(ZEBX_NOXDISPLAY_LIBRARY)
  # What it declares went with the software display.
  list(REMOVE_ITEM ZEBX_HOST_HEADERS platform/noxdisplay/software/display_control.h)
endif()
foreach(header IN LISTS ZEBX_HOST_HEADERS)
  cmake_path(GET header PARENT_PATH folder)
  install(FILES ${PROJECT_BINARY_DIR}/include/zebx/${header}
          DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zebx/${folder})
endforeach()
