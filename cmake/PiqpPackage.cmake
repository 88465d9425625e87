# The headers of PIQP as script/setup takes them from PyPI; one source of ours includes them.

set (piqp_folder "${KALVO_ENGINES_DIR}/piqp-0.7.0")
set (piqp_source "${CMAKE_SOURCE_DIR}/kalvo/engines/piqp/library.cpp")
if (NOT EXISTS "${piqp_folder}/include/piqp/piqp.hpp")
    message (FATAL_ERROR "${piqp_folder}/include is missing: run script/setup, or set KALVO_ENGINES_DIR")
endif ()
set_property (SOURCE "${piqp_source}" APPEND PROPERTY COMPILE_OPTIONS -isystem "${piqp_folder}/include")
