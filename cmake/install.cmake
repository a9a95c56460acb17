# Headers, library, tool, find_package(zebx) and pkg-config files.
include(CMakePackageConfigHelpers)

install(TARGETS zebx EXPORT zebxTargets)
install(EXPORT zebxTargets NAMESPACE zebx:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/zebx)
configure_package_config_file(cmake/zebxConfig.cmake.in ${PROJECT_BINARY_DIR}/zebxConfig.cmake
                              INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/zebx)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zebxConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zebxConfig.cmake ${PROJECT_BINARY_DIR}/zebxConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/zebx)
configure_file(cmake/zebx.pc.in ${PROJECT_BINARY_DIR}/zebx.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zebx.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
foreach(folder IN ITEMS platform record capture)
  install(DIRECTORY ${folder} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zebx
          FILES_MATCHING PATTERN "*.h" PATTERN software EXCLUDE)
endforeach()
install(FILES zebx.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zebx)
