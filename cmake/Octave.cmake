# GNU Octave as host, asked of its mkoctfile.

find_program (KALVO_MKOCTFILE mkoctfile REQUIRED)
foreach (variable OCTINCLUDEDIR OCTLIBDIR)
    execute_process (COMMAND ${KALVO_MKOCTFILE} -p ${variable} OUTPUT_VARIABLE ${variable}
        OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
endforeach ()

cmake_path (GET OCTINCLUDEDIR PARENT_PATH octave_includes)        # so that <octave/quit.h> is found too
add_gateway (octave "${OCTINCLUDEDIR}" "${octave_includes}")

# Octave calls the host layer's frame around the gateway, and the gateway's calls of functions in wrapped.txt go through the host
# layer too: the linker replaces these functions.
target_compile_definitions (host_octave PUBLIC mexFunction=gateway_function)
target_link_options (host_octave INTERFACE "-Wl,@${CMAKE_SOURCE_DIR}/host/octave/wrapped.txt" -Wl,-z,defs)
set_property (TARGET host_octave PROPERTY INTERFACE_LINK_DEPENDS "${CMAKE_SOURCE_DIR}/host/octave/wrapped.txt")
target_link_directories (host_octave INTERFACE "${OCTLIBDIR}")
target_link_libraries (host_octave INTERFACE octinterp octave)

add_toolbox_module (octave mex)
