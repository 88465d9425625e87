# The test programs link the library statically, so that tests can use its inner functions and engines of their own; the installed
# library is tested by tests/octave.

find_package (GTest REQUIRED)
add_gateway (standalone "${CMAKE_SOURCE_DIR}/host/standalone")
copy_highs (tests_highs "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
add_custom_command (OUTPUT "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/kalvo-worker"
    COMMAND ${CMAKE_COMMAND} -E copy $<TARGET_FILE:kalvo-worker> "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/kalvo-worker"
    DEPENDS kalvo-worker VERBATIM)
add_executable (scripted-worker "${CMAKE_SOURCE_DIR}/tests/worker/scripted_worker.cpp")
target_include_directories (scripted-worker PRIVATE "${CMAKE_SOURCE_DIR}")
target_link_libraries (scripted-worker PRIVATE kalvo_core kalvo_warnings)
add_custom_target (tests_worker ALL DEPENDS "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/kalvo-worker")

# add_test_program (name folder library ...): sources of tests/<folder> and of tests/support
function (add_test_program name folder)
    collect_sources (sources tests/${folder})
    collect_sources (support tests/support)
    add_executable (${name} ${sources} ${support})
    target_include_directories (${name} PRIVATE "${CMAKE_SOURCE_DIR}" "${CMAKE_SOURCE_DIR}/kalvo/include")
    target_compile_definitions (${name} PRIVATE KALVO_TEST_DATA="${CMAKE_SOURCE_DIR}/tests/data")
    target_link_libraries (${name} PRIVATE kalvo_warnings ${ARGN})
    add_dependencies (${name} tests_highs tests_worker scripted-worker)
endfunction ()

add_test_program (library_tests library GTest::gtest_main kalvo_core)

# The names of the task's operations, for a test that calls each of them.
file (READ kalvo/include/kalvo.h header)
string (REGEX MATCHALL "KLV_[a-z]+ \\(KLVtask_t task" operations "${header}")
list (TRANSFORM operations REPLACE "KLV_([a-z]+) .*" "OPERATION (\\1)\n")
list (JOIN operations "" operations)
file (CONFIGURE OUTPUT operations.inc CONTENT "${operations}")
set_property (DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS kalvo/include/kalvo.h)
set_property (SOURCE tests/library/entry_guards_test.cpp PROPERTY INCLUDE_DIRECTORIES "${CMAKE_BINARY_DIR}")
add_test_program (unit_tests unit GTest::gtest_main gateway_standalone kalvo_core)
add_test_program (fuzz_files fuzz/files kalvo_core)
add_test_program (fuzz_calls fuzz/calls gateway_standalone kalvo_core gmpxx gmp)
add_test_program (fuzz_ways fuzz/ways GTest::gtest kalvo_core gmpxx gmp)
target_sources (fuzz_calls PRIVATE "${CMAKE_SOURCE_DIR}/tests/unit/notation.cpp")

if (NOT KALVO_SANITIZE AND NOT KALVO_MATLAB)
    include (StandIn)
endif ()
