# MATLAB as host, where it is installed: Matlab_ROOT_DIR names its folder. host/matlab/build.m sets all of this.

find_package (Matlab REQUIRED COMPONENTS MX_LIBRARY)
find_library (matlab_ut ut REQUIRED PATHS "${Matlab_ROOT_DIR}/bin/glnxa64" NO_DEFAULT_PATH)

add_gateway (matlab "${Matlab_INCLUDE_DIRS}")
# Separate complex storage and 64-bit sizes: the interface that the gateway asks for.
target_compile_definitions (host_matlab PUBLIC MATLAB_MEX_FILE MATLAB_DEFAULT_RELEASE=R2017b)
target_link_libraries (host_matlab INTERFACE Matlab::mex Matlab::mx "${matlab_ut}")
# Nothing but MATLAB calls the entry: without -u the linker would leave the gateway out.
target_link_options (host_matlab INTERFACE -Wl,-u,mexFunction -Wl,-z,defs)

add_toolbox_module (matlab "${Matlab_MEX_EXTENSION}")
# MATLAB brings a C++ run-time library of its own, which may be older than the compiler's.
foreach (target kalvoopt kalvo64)
    target_link_options (${target} PRIVATE -static-libstdc++)
endforeach ()
