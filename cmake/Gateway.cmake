# The gateway's sources are the same for every host; a host is the folder host/<host> with its mex.h.

collect_sources (gateway_sources gateway input output params callbacks sensitivity)

# add_gateway (host include-folder ...): the static library gateway_<host>
function (add_gateway host)
    collect_sources (host_sources host/${host})
    if (NOT gateway_sources AND NOT host_sources)
        return ()
    endif ()
    add_library (gateway_${host} STATIC ${gateway_sources} ${host_sources})
    target_include_directories (gateway_${host} PUBLIC "${CMAKE_SOURCE_DIR}" "${CMAKE_SOURCE_DIR}/kalvo/include")
    target_include_directories (gateway_${host} SYSTEM PUBLIC ${ARGN})
    target_link_libraries (gateway_${host} PRIVATE kalvo_warnings)
endfunction ()

# add_mex_module (host suffix): the module in the toolbox folder; it finds the libraries beside itself
function (add_mex_module host suffix)
    add_library (kalvoopt MODULE "${no_source}")
    set_target_properties (kalvoopt PROPERTIES PREFIX "" SUFFIX ".${suffix}"
        LIBRARY_OUTPUT_DIRECTORY "${KALVO_TOOLBOX_DIR}" BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH "\$ORIGIN"
        LINK_DEPENDS "${CMAKE_SOURCE_DIR}/cmake/kalvoopt.map")
    target_link_libraries (kalvoopt PRIVATE "$<LINK_LIBRARY:WHOLE_ARCHIVE,gateway_${host}>" kalvo64)
    target_link_options (kalvoopt PRIVATE "-Wl,--version-script,${CMAKE_SOURCE_DIR}/cmake/kalvoopt.map"
        -Wl,-z,nodelete)
    add_dependencies (kalvoopt toolbox_highs)
endfunction ()

if (KALVO_MATLAB)
    include (Matlab)
elseif (NOT KALVO_SANITIZE)        # a program that is not sanitized cannot load a sanitized module
    include (Octave)
endif ()
