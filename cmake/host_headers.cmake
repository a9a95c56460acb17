# The headers that hosts get, as they get them: below include/zebx of the build.
set(ZEBX_HOST_HEADERS_LIST ${PROJECT_SOURCE_DIR}/cmake/host_headers.txt)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${ZEBX_HOST_HEADERS_LIST})
file(STRINGS ${ZEBX_HOST_HEADERS_LIST} ZEBX_HOST_HEADERS)
list(TRANSFORM ZEBX_HOST_HEADERS PREPEND ${PROJECT_SOURCE_DIR}/ OUTPUT_VARIABLE sources)
set(script ${PROJECT_SOURCE_DIR}/cmake/prefix_includes.cmake)
set(written ${PROJECT_BINARY_DIR}/include/zebx.written)
add_custom_command(
  OUTPUT ${written}
  COMMAND ${CMAKE_COMMAND} -D LIST=${ZEBX_HOST_HEADERS_LIST} -D FROM=${PROJECT_SOURCE_DIR} -D
          TO=${PROJECT_BINARY_DIR}/include/zebx -P ${script}
  COMMAND ${CMAKE_COMMAND} -E touch ${written}
  DEPENDS ${sources} ${ZEBX_HOST_HEADERS_LIST} ${script}
  COMMENT "Writing the headers that hosts get")
add_custom_target(zebx_host_headers DEPENDS ${written})
