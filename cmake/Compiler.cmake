# Language, warnings, visibility and sanitizers: the same for every target.

set (CMAKE_CXX_STANDARD 20)
set (CMAKE_CXX_STANDARD_REQUIRED ON)
set (CMAKE_CXX_EXTENSIONS OFF)
set (CMAKE_C_STANDARD 11)
set (CMAKE_C_STANDARD_REQUIRED ON)
set (CMAKE_C_EXTENSIONS OFF)
set (CMAKE_POSITION_INDEPENDENT_CODE ON)
set (CMAKE_C_VISIBILITY_PRESET hidden)
set (CMAKE_CXX_VISIBILITY_PRESET hidden)
set (CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set (CMAKE_EXPORT_COMPILE_COMMANDS ON)
set (CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")

find_program (KALVO_CCACHE ccache)
if (KALVO_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set (CMAKE_C_COMPILER_LAUNCHER "${KALVO_CCACHE}")
    set (CMAKE_CXX_COMPILER_LAUNCHER "${KALVO_CCACHE}")
endif ()

# -Wrestrict is wrong about std::string in GCC 12.
add_library (kalvo_warnings INTERFACE)
target_compile_options (kalvo_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wcast-qual -Wformat=2 -Wno-format-nonliteral -Wno-restrict -Wundef
    $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual -Wsuggest-override>
    $<$<BOOL:${KALVO_WERROR}>:-Werror>)

if (KALVO_SANITIZE)
    # -Wmaybe-uninitialized is wrong about std::regex under sanitizers in GCC 12.
    add_compile_options (-fsanitize=${KALVO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -O1 -g1
        -Wno-maybe-uninitialized)
    add_link_options (-fsanitize=${KALVO_SANITIZE})
    add_compile_definitions (KALVO_SANITIZED)
endif ()
