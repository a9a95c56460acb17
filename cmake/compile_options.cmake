# What every target of the project is compiled with.
function(zebx_compile_options target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
  target_compile_options(
    ${target} PRIVATE -Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wnon-virtual-dtor
                      -Woverloaded-virtual -Wold-style-cast -Wcast-align -Wundef)
  # GCC 12 takes joined strings for overlapping copies, inside its own <string>.
  target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
  # The standard library checks its own indexes and iterators where speed is not the point.
  target_compile_definitions(${target} PRIVATE $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF CXX_VISIBILITY_PRESET hidden
                                             VISIBILITY_INLINES_HIDDEN ON)
endfunction()

if(ZEBX_SANITIZE)
  add_compile_options(-fsanitize=${ZEBX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${ZEBX_SANITIZE})
endif()
