# Installs the library into a scratch prefix, then configures, builds and runs
# examples/host against it with find_package(ZORModelIo).
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
