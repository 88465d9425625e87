# collect_sources (variable folder ...): every C and C++ source below the folders, which may be empty.
function (collect_sources variable)
    set (patterns)
    foreach (folder IN LISTS ARGN)
        list (APPEND patterns "${CMAKE_SOURCE_DIR}/${folder}/*.cpp" "${CMAKE_SOURCE_DIR}/${folder}/*.c")
    endforeach ()
    file (GLOB_RECURSE sources CONFIGURE_DEPENDS ${patterns})
    set (${variable} "${sources}" PARENT_SCOPE)
endfunction ()

# A module made only of static libraries needs one source of its own.
set (no_source "${CMAKE_BINARY_DIR}/empty.cpp")
file (CONFIGURE OUTPUT "${no_source}" CONTENT "")
