# Writes the headers that hosts get below TO: as they stand, but including each other by TO's last
# directory, so that a host finds ours whatever else its include path holds.
#
# usage: cmake -D LIST=file -D FROM=directory -D TO=directory -P prefix_includes.cmake
cmake_minimum_required(VERSION 3.25)
cmake_path(GET TO FILENAME prefix)
file(STRINGS ${LIST} headers)
foreach(header IN LISTS headers)
  file(READ ${FROM}/${header} text)
  string(REGEX MATCHALL "\n#include \"[^\"]+" included "${text}")
  list(TRANSFORM included REPLACE "\n#include \"" "")
  list(REMOVE_ITEM included ${headers})
  if(included)
    message(FATAL_ERROR "${header} is for hosts, but not ${included}: see ${LIST}")
  endif()
  string(REGEX REPLACE "\n#include \"" "\n#include \"${prefix}/" text "${text}")
  file(WRITE ${TO}/${header} "${text}")
endforeach()
