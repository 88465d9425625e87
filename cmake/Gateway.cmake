# The gateway's sources are the same for every host; a host is the folder host/<host> with its mex.h.

collect_sources (gateway_sources common gateway input output params callbacks sensitivity)

# add_gateway (host include-folder ...): host_<host>, what the host lacks, and gateway_<host>, the gateway on top of it
function (add_gateway host)
    collect_sources (host_sources host/${host})
    add_library (host_${host} OBJECT "${no_source}" ${host_sources})
    target_include_directories (host_${host} PUBLIC "${CMAKE_SOURCE_DIR}")
    target_include_directories (host_${host} SYSTEM PUBLIC ${ARGN})
    target_link_libraries (host_${host} PRIVATE kalvo_warnings)

    add_library (gateway_${host} STATIC "${no_source}" ${gateway_sources})
    target_include_directories (gateway_${host} PUBLIC "${CMAKE_SOURCE_DIR}/kalvo/include")
    target_link_libraries (gateway_${host} PUBLIC host_${host} PRIVATE kalvo_warnings)
endfunction ()

# add_mex_module (name host suffix source ...): a module that finds its libraries beside itself
function (add_mex_module name host suffix)
    set (exports "${CMAKE_SOURCE_DIR}/cmake/kalvoopt.map")
    add_library (${name} MODULE ${ARGN})
    set_target_properties (${name} PROPERTIES PREFIX "" SUFFIX ".${suffix}" LINK_DEPENDS "${exports}"
        BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH "\$ORIGIN")
    target_link_libraries (${name} PRIVATE host_${host} kalvo_warnings)
    target_link_options (${name} PRIVATE "-Wl,--version-script,${exports}" -Wl,-z,nodelete)
endfunction ()

# add_toolbox_module (host suffix): the gateway itself, in the toolbox folder
function (add_toolbox_module host suffix)
    add_mex_module (kalvoopt ${host} ${suffix} "${no_source}")
    set_target_properties (kalvoopt PROPERTIES LIBRARY_OUTPUT_DIRECTORY "${KALVO_TOOLBOX_DIR}")
    target_link_libraries (kalvoopt PRIVATE gateway_${host} kalvo64)
    add_dependencies (kalvoopt toolbox_highs)
endfunction ()

if (KALVO_MATLAB)
    include (Matlab)
elseif (NOT KALVO_SANITIZE)        # a program that is not sanitized cannot load a sanitized module
    include (Octave)
endif ()
