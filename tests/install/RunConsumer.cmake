# Installs the built library into a fresh temporary prefix, then configures, builds and
# runs a consumer project that only knows find_package(EditorUtil).
file(REMOVE_RECURSE "${WORK_DIR}")
set(prefix "${WORK_DIR}/prefix")

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "Command failed (${rc}): ${ARGN}\n${out}\n${err}")
  endif()
  set(last_output "${out}" PARENT_SCOPE)
endfunction()

run(${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${prefix}")
run(${CMAKE_COMMAND} -S "${CONSUMER_SOURCE_DIR}" -B "${WORK_DIR}/build" -G "${GENERATOR}"
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_BUILD_TYPE=Release)
run(${CMAKE_COMMAND} --build "${WORK_DIR}/build")
run("${WORK_DIR}/build/consumer")
message(STATUS "${last_output}")
if(NOT last_output MATCHES "EditorUtil ")
  message(FATAL_ERROR "The consumer did not print the library version: ${last_output}")
endif()
if(NOT last_output MATCHES "free line x: 60 10")
  message(FATAL_ERROR "The consumer did not place its items on a free line: ${last_output}")
endif()
if(NOT last_output MATCHES "stock picture found")
  message(FATAL_ERROR "The consumer, outside the prefix, did not find the stock pictures: ${last_output}")
endif()
