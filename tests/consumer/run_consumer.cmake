# Configures, builds and runs the consumer project against a ql_types build tree, or, with
# INSTALL_PREFIX set, against what `cmake --install` puts into that (fresh) prefix.
file(REMOVE_RECURSE ${BINARY_DIR})
if(INSTALL_PREFIX)
  file(REMOVE_RECURSE ${INSTALL_PREFIX})
  execute_process(COMMAND ${CMAKE_COMMAND} --install ${QL_TYPES_BUILD_DIR} --prefix ${INSTALL_PREFIX}
    RESULT_VARIABLE rc OUTPUT_QUIET)
  if(rc)
    message(FATAL_ERROR "installing ql_types into ${INSTALL_PREFIX} failed")
  endif()
  set(find_args -DCMAKE_PREFIX_PATH=${INSTALL_PREFIX})
else()
  set(find_args -Dql_types_DIR=${QL_TYPES_BUILD_DIR})
endif()
execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${BINARY_DIR} -G ${GENERATOR} ${find_args}
    "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}" "-DCMAKE_EXE_LINKER_FLAGS=${LINK_FLAGS}"
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
