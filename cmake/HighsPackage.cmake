# The HiGHS packages as script/setup installs them from PyPI. Our library loads the two files at run time from its own folder, so
# the build needs their C header only, and copies the files to where our code is.

set (highs_dist "${KALVO_ENGINES_DIR}/highsbox/highs_dist")
set (highs_files
    "${highs_dist}/lib/libhighs.so"
    "${KALVO_ENGINES_DIR}/highspy_extras/libhighs_extras.so")
set (highs_includes "${highs_dist}/include/highs" "${highs_dist}/include")

foreach (file IN LISTS highs_files)
    if (NOT EXISTS "${file}")
        message (FATAL_ERROR "${file} is missing: run script/setup, or set KALVO_ENGINES_DIR")
    endif ()
endforeach ()

# A target `name` that keeps copies of the engine's files in `folder`.
function (copy_highs name folder)
    foreach (file IN LISTS highs_files)
        cmake_path (GET file FILENAME filename)
        add_custom_command (OUTPUT "${folder}/${filename}"
            COMMAND ${CMAKE_COMMAND} -E make_directory "${folder}"
            COMMAND ${CMAKE_COMMAND} -E copy "${file}" "${folder}/${filename}"
            DEPENDS "${file}" VERBATIM)
        list (APPEND copies "${folder}/${filename}")
    endforeach ()
    add_custom_target (${name} ALL DEPENDS ${copies})
endfunction ()
