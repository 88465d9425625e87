# The solver library. The version script exports KLV_… names only; nodelete keeps the code mapped when a host unloads MEX files at
# exit while an optimiser still runs in its process.

find_package (Threads REQUIRED)
find_package (ZLIB REQUIRED)
find_package (LAPACK REQUIRED)
find_package (nlohmann_json 3.11 REQUIRED)
collect_sources (library_sources kalvo)
set (worker_main "${CMAKE_SOURCE_DIR}/kalvo/worker/program.cpp")
list (REMOVE_ITEM library_sources "${worker_main}")
collect_sources (highs_sources kalvo/engines/highs)
foreach (directory IN LISTS highs_includes)
    set_property (SOURCE ${highs_sources} APPEND PROPERTY COMPILE_OPTIONS -isystem "${directory}")
endforeach ()

add_library (kalvo_core STATIC ${library_sources})
target_include_directories (kalvo_core PUBLIC "${CMAKE_SOURCE_DIR}" "${CMAKE_SOURCE_DIR}/kalvo/include")
target_link_libraries (kalvo_core PRIVATE kalvo_warnings ZLIB::ZLIB nlohmann_json::nlohmann_json LAPACK::LAPACK PUBLIC Threads::Threads ${CMAKE_DL_LIBS})

add_library (kalvo64 SHARED "${no_source}")
set_target_properties (kalvo64 PROPERTIES LIBRARY_OUTPUT_DIRECTORY "${KALVO_TOOLBOX_DIR}"
    LINK_DEPENDS "${CMAKE_SOURCE_DIR}/cmake/kalvo64.map")
target_include_directories (kalvo64 INTERFACE "${CMAKE_SOURCE_DIR}/kalvo/include")
target_link_libraries (kalvo64 PRIVATE "$<LINK_LIBRARY:WHOLE_ARCHIVE,kalvo_core>")
target_link_options (kalvo64 PRIVATE "-Wl,--version-script,${CMAKE_SOURCE_DIR}/cmake/kalvo64.map"
    -Wl,-z,nodelete)
if (NOT KALVO_SANITIZE)        # with sanitizers, undefined symbols are found in the program
    target_link_options (kalvo64 PRIVATE -Wl,-z,defs)
endif ()
copy_highs (toolbox_highs "${KALVO_TOOLBOX_DIR}")

# The program that optimisers run in, beside the library that starts it.
add_executable (kalvo-worker "${worker_main}")
set_target_properties (kalvo-worker PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${KALVO_TOOLBOX_DIR}")
target_link_libraries (kalvo-worker PRIVATE kalvo_core kalvo_warnings)

# Prints the pages of the manual that are made from the library's tables: see script/docs.
add_executable (write_docs "${CMAKE_SOURCE_DIR}/docs/write_docs.cpp")
target_link_libraries (write_docs PRIVATE kalvo_core kalvo_warnings)
