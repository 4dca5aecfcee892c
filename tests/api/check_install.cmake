# Installs the project into a scratch prefix, then builds and runs a small C
# host against the installed files twice: through find_package(zelengine) and
# through pkg-config (run by CTest with -DBUILD_DIR, -DSOURCE_DIR, -DWORK_DIR).
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix}
  RESULT_VARIABLE rc OUTPUT_QUIET)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "cmake --install failed")
endif()
foreach(f include/zelengine.h lib/libzelengine.so.1 lib/pkgconfig/zelengine.pc
          lib/cmake/zelengine/zelengineConfig.cmake)
  if(NOT EXISTS ${prefix}/${f})
    message(FATAL_ERROR "not installed: ${f}")
  endif()
endforeach()

execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR}/host -G Ninja
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_BUILD_TYPE=Release
  RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE out)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "configuring the host failed:\n${out}")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK_DIR}/host
  RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE out)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "building the host failed:\n${out}")
endif()
execute_process(COMMAND ${WORK_DIR}/host/host RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE out)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "the host linked against the installed library failed:\n${out}")
endif()

set(ENV{PKG_CONFIG_PATH} ${prefix}/lib/pkgconfig)
execute_process(COMMAND pkg-config --cflags --libs zelengine
  OUTPUT_VARIABLE flags RESULT_VARIABLE rc OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "pkg-config does not find zelengine")
endif()
separate_arguments(flags UNIX_COMMAND "${flags}")
execute_process(COMMAND cc -std=c99 -Wall -Werror ${SOURCE_DIR}/host.c ${flags}
    -Wl,-rpath,${prefix}/lib -o ${WORK_DIR}/host_pc
  RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE out)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "building the host with pkg-config flags failed:\n${out}")
endif()
execute_process(COMMAND ${WORK_DIR}/host_pc RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE out)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "the pkg-config host failed:\n${out}")
endif()
