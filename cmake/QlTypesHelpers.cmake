# Helper functions shared by the library, test and benchmark folders.

set(QL_TYPES_WARNINGS -Wall -Wextra -Wno-unused-parameter)
# float-cast-overflow is not part of "undefined" in GCC: out-of-range float-to-integer casts are asked for by name.
set(QL_TYPES_SANITIZER_FLAGS -fsanitize=address,undefined,float-cast-overflow -fno-sanitize-recover=all
    -fno-omit-frame-pointer)

# Common compile settings for every target of this project.
function(ql_types_target_defaults target)
  target_compile_options(${target} PRIVATE ${QL_TYPES_WARNINGS})
  if(QL_TYPES_SANITIZE)
    target_compile_options(${target} PRIVATE ${QL_TYPES_SANITIZER_FLAGS})
    # Private: the sanitizers belong to this build, never to the exported targets or their clients.
    target_link_options(${target} PRIVATE -fsanitize=address,undefined,float-cast-overflow)
  endif()
endfunction()

# ql_types_add_test(<folder>): one test executable per library folder, from tests/<folder>/*.cpp.
function(ql_types_add_test folder)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/*.cpp)
  if(NOT sources)
    return()
  endif()
  set(target ql_test_${folder})
  add_executable(${target} ${sources})
  target_link_libraries(${target} PRIVATE ql_types::ql_types ql_test_support GTest::gtest GTest::gmock GTest::gtest_main)
  ql_types_target_defaults(${target})
  gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
    PROPERTIES ENVIRONMENT "QL_TYPES_SOURCE_DIR=${PROJECT_SOURCE_DIR}")
endfunction()
