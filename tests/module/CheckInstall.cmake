# Installs the library into a scratch prefix, then configures, builds and runs
# examples/host against it with find_package(ZORModelIo), and once more with
# the compiler flags pkg-config gives for the moved prefix.
file(REMOVE_RECURSE "${SCRATCH}")
execute_process(COMMAND ${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${SCRATCH}/prefix"
                RESULT_VARIABLE rc OUTPUT_QUIET)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "install failed")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} -S "${SOURCE_DIR}/examples/host" -B "${SCRATCH}/host"
                        -DCMAKE_PREFIX_PATH=${SCRATCH}/prefix
                RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "configuring the host failed:\n${out}\n${err}")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --build "${SCRATCH}/host" RESULT_VARIABLE rc OUTPUT_VARIABLE out
                ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "building the host failed:\n${out}\n${err}")
endif()
execute_process(COMMAND "${SCRATCH}/host/zormodel_host" "${SOURCE_DIR}/examples/objects/primitives-1.15.obj"
                RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT rc EQUAL 0 OR NOT out MATCHES "cube")
  message(FATAL_ERROR "the host failed:\n${out}\n${err}")
endif()

find_program(PKG_CONFIG pkg-config)
if(NOT PKG_CONFIG)
  message(FATAL_ERROR "pkg-config not found")
endif()
set(ENV{PKG_CONFIG_PATH} "${SCRATCH}/prefix/lib/pkgconfig")
execute_process(COMMAND ${PKG_CONFIG} --cflags --libs ZORModelIo RESULT_VARIABLE rc OUTPUT_VARIABLE flags
                ERROR_VARIABLE err OUTPUT_STRIP_TRAILING_WHITESPACE)
string(FIND "${flags}" "-I${SCRATCH}/prefix/" at)
if(NOT rc EQUAL 0 OR at EQUAL -1 OR flags MATCHES "-std=")
  message(FATAL_ERROR "pkg-config flags for the scratch prefix: '${flags}' ${err}")
endif()
separate_arguments(flags UNIX_COMMAND "${flags}")
execute_process(COMMAND ${CXX} -std=c++17 "${SOURCE_DIR}/examples/host/host.cpp" -o "${SCRATCH}/host-pc" ${flags}
                        -Wl,-rpath,${SCRATCH}/prefix/lib
                RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "building the host through pkg-config failed:\n${out}\n${err}")
endif()
execute_process(COMMAND "${SCRATCH}/host-pc" "${SOURCE_DIR}/examples/objects/primitives-1.15.obj"
                RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT rc EQUAL 0 OR NOT out MATCHES "cube")
  message(FATAL_ERROR "the host built through pkg-config failed:\n${out}\n${err}")
endif()
