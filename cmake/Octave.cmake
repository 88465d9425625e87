# GNU Octave as host, asked of its mkoctfile.

find_program (KALVO_MKOCTFILE mkoctfile REQUIRED)
foreach (variable OCTINCLUDEDIR OCTLIBDIR)
    execute_process (COMMAND ${KALVO_MKOCTFILE} -p ${variable} OUTPUT_VARIABLE ${variable}
        OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
endforeach ()

cmake_path (GET OCTINCLUDEDIR PARENT_PATH octave_includes)        # so that <octave/quit.h> is found too
add_gateway (octave "${OCTINCLUDEDIR}" "${octave_includes}")
if (gateway_sources AND TARGET kalvo64)
    add_mex_module (octave mex)
    # The functions of the host that Octave and MATLAB answer differently are replaced at link time.
    set (wrapped "${CMAKE_SOURCE_DIR}/host/octave/wrapped.txt")
    set_property (TARGET kalvoopt APPEND PROPERTY LINK_DEPENDS "${wrapped}")
    target_link_options (kalvoopt PRIVATE "-Wl,@${wrapped}" -Wl,-z,defs)
    target_link_directories (kalvoopt PRIVATE "${OCTLIBDIR}")
    target_link_libraries (kalvoopt PRIVATE octinterp octave)
endif ()
