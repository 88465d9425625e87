# A stand-in for MATLAB: the standalone host in libraries with MATLAB's names and places, so that the module for MATLAB can be built
# and loaded without MATLAB. tests/module/run does both.

set (stand_in "${CMAKE_BINARY_DIR}/matlab")
file (MAKE_DIRECTORY "${stand_in}/extern/include")
file (CREATE_LINK "${CMAKE_SOURCE_DIR}/host/standalone/mex.h" "${stand_in}/extern/include/mex.h" SYMBOLIC)

# add_stand_in (library object-pattern): one of MATLAB's libraries, made of the standalone host's objects that match the pattern
set_target_properties (host_standalone PROPERTIES CXX_VISIBILITY_PRESET default)
function (add_stand_in library pattern)
    add_library (${library} SHARED "$<FILTER:$<TARGET_OBJECTS:host_standalone>,INCLUDE,/(${pattern})\\.cpp>")
    set_target_properties (${library} PROPERTIES LIBRARY_OUTPUT_DIRECTORY "${stand_in}/bin/glnxa64" LINKER_LANGUAGE CXX)
    target_link_libraries (${library} PRIVATE ${ARGN})
    target_link_options (${library} PRIVATE -Wl,-z,defs)
endfunction ()
add_stand_in (mx "mx|array|values")
add_stand_in (mex "mex" mx)
add_stand_in (ut "ut" mx)

# Unit tests that use only the gateway's entry, of a module that is named on the command line.
file (GLOB tests CONFIGURE_DEPENDS RELATIVE "${CMAKE_SOURCE_DIR}/tests/unit" "${CMAKE_SOURCE_DIR}/tests/unit/*.cpp")
foreach (test IN LISTS tests)
    file (STRINGS "${CMAKE_SOURCE_DIR}/tests/unit/${test}" inside LIMIT_COUNT 1
        REGEX "#include \"(callbacks|common|gateway|input|output|params|sensitivity)/")
    if (inside)
        list (APPEND inner_tests "${test}")
    endif ()
endforeach ()
list (APPEND inner_tests "problem_text.cpp")        # reaches inside the solver library
list (JOIN inner_tests "|" inner_tests)
add_executable (module_tests "${CMAKE_SOURCE_DIR}/tests/module/module.cpp"
    "$<FILTER:$<TARGET_OBJECTS:unit_tests>,EXCLUDE,/(${inner_tests})\\.o>")
target_include_directories (module_tests PRIVATE "${CMAKE_SOURCE_DIR}" SYSTEM PRIVATE "${CMAKE_SOURCE_DIR}/host/standalone")
target_link_libraries (module_tests PRIVATE kalvo_warnings GTest::gtest kalvo64 mex ut mx)
target_link_options (module_tests PRIVATE -Wl,--no-as-needed)        # all three are there when the module is loaded
