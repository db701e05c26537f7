# Configures, builds and runs the consumer project against a ql_types build tree.
file(REMOVE_RECURSE ${BINARY_DIR})
execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${BINARY_DIR} -G ${GENERATOR}
    -Dql_types_DIR=${QL_TYPES_DIR} "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}" "-DCMAKE_EXE_LINKER_FLAGS=${LINK_FLAGS}"
  RESULT_VARIABLE rc)
if(rc)
  message(FATAL_ERROR "configuring the consumer project failed")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --build ${BINARY_DIR} RESULT_VARIABLE rc)
if(rc)
  message(FATAL_ERROR "building the consumer project failed")
endif()
execute_process(COMMAND ${BINARY_DIR}/consumer RESULT_VARIABLE rc OUTPUT_VARIABLE out)
message(STATUS "${out}")
if(rc)
  message(FATAL_ERROR "the consumer program failed")
endif()
