# MATLAB as host, installed in the folder KALVO_MATLAB. host/matlab/build.m calls this. CMake's own module for MATLAB would
# start MATLAB, for a version that is not needed here.

set (matlab_libraries)
foreach (name mex mx ut)
    find_library (matlab_library ${name} PATHS "${KALVO_MATLAB}/bin/glnxa64" NO_DEFAULT_PATH NO_CACHE REQUIRED)
    list (APPEND matlab_libraries "${matlab_library}")
    unset (matlab_library)
endforeach ()

add_gateway (matlab "${KALVO_MATLAB}/extern/include")
# Separate complex storage and 64-bit sizes: the interface that the gateway asks for.
target_compile_definitions (host_matlab PUBLIC MATLAB_MEX_FILE MATLAB_DEFAULT_RELEASE=R2017b)
target_link_libraries (host_matlab INTERFACE ${matlab_libraries})
# Nothing but MATLAB calls the entry: without -u the linker would leave the gateway out.
target_link_options (host_matlab INTERFACE -Wl,-u,mexFunction -Wl,-z,defs)

add_toolbox_module (matlab mexa64)
# MATLAB brings a C++ run-time library of its own, which may be older than the compiler's.
foreach (target kalvoopt kalvo64 kalvo-worker)
    target_link_options (${target} PRIVATE -static-libstdc++)
endforeach ()
