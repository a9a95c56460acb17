# Installs BUILD below WORK, then builds the package's hosts against what is there and runs them.
cmake_minimum_required(VERSION 3.25)
set(prefix ${WORK}/prefix)

function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})

file(GLOB_RECURSE pkg_config_file ${prefix}/*/zebx.pc)
cmake_path(GET pkg_config_file PARENT_PATH pkg_config_directory)
set(ENV{PKG_CONFIG_PATH} ${pkg_config_directory})
run(${CMAKE_COMMAND} -G ${GENERATOR} -S ${CMAKE_CURRENT_LIST_DIR}/package -B ${WORK}/build
    -D CMAKE_CXX_COMPILER=${COMPILER} -D CMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${WORK}/build)

run(${WORK}/build/own_names)
run(${WORK}/build/own_doors)
cmake_path(GET pkg_config_directory PARENT_PATH library_directory)
set(ENV{LD_LIBRARY_PATH} ${library_directory})
run(${WORK}/build/own_names_pkg_config)

# The examples copy and list a recording that the installed tool makes: two grey pictures.
string(REPEAT "~" 384 picture)
file(WRITE ${WORK}/two.y4m "YUV4MPEG2 W16 H16 F25:1\nFRAME\n${picture}FRAME\n${picture}")
run(${prefix}/bin/zebtool import ${WORK}/two.y4m ${WORK}/two.zebz)
run(${WORK}/build/record_frames ${WORK}/two.zebz ${WORK}/copy.zebz)
execute_process(COMMAND ${WORK}/build/list_recording ${WORK}/copy.zebz OUTPUT_VARIABLE listed
                COMMAND_ERROR_IS_FATAL ANY)
if(NOT listed MATCHES "block 0 frame 0 at .* I-frame\n  decoded.*block 0 frame 1 at ")
  message(FATAL_ERROR "the example printed:\n${listed}")
endif()
execute_process(COMMAND ${WORK}/build/play_recording ${WORK}/copy.zebz WORKING_DIRECTORY ${WORK}
                OUTPUT_VARIABLE played COMMAND_ERROR_IS_FATAL ANY)
if(NOT played MATCHES "block0.bmp: .*\n2 frames played" OR NOT EXISTS ${WORK}/block0.bmp)
  message(FATAL_ERROR "the example printed:\n${played}")
endif()

# The cameras are virtual ones.
set(ENV{ZEBX_DEVICES} 7:2)
execute_process(COMMAND ${WORK}/build/live_cameras 2 OUTPUT_VARIABLE counted
                COMMAND_ERROR_IS_FATAL ANY)
if(NOT counted MATCHES "camera 0: [1-9][0-9]* frames, .*camera 1: [1-9][0-9]* frames, ")
  message(FATAL_ERROR "the example printed:\n${counted}")
endif()
