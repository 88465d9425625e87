# The Clarabel crate, built by cargo into a folder that all presets share, with the notices of all crates that are linked with it.

# The newest minimum that a crate of the lock file asks for.
set (cargo_needed 1.88)

function (check_cargo result candidate)
    execute_process (COMMAND "${candidate}" --version OUTPUT_VARIABLE version ERROR_QUIET)
    if (NOT version MATCHES "^cargo ([0-9.]+)" OR CMAKE_MATCH_1 VERSION_LESS cargo_needed)
        set (${result} FALSE PARENT_SCOPE)
    endif ()
endfunction ()

find_program (KALVO_CARGO cargo PATHS "$ENV{HOME}/.cargo/bin" VALIDATOR check_cargo)
if (NOT KALVO_CARGO)
    message (FATAL_ERROR "cargo ${cargo_needed} or later is missing: run script/setup, or set KALVO_CARGO")
endif ()
cmake_path (GET KALVO_CARGO PARENT_PATH cargo_folder)

set (shim "${CMAKE_SOURCE_DIR}/kalvo/engines/clarabel/shim")
set (clarabel_library "${KALVO_CLARABEL_DIR}/libclarabel_shim.a")
set (clarabel_notices "${KALVO_CLARABEL_DIR}/NOTICES")
add_custom_command (OUTPUT "${clarabel_library}" "${clarabel_notices}"
    COMMAND ${CMAKE_COMMAND} -E env "RUSTC=${cargo_folder}/rustc"
        "${KALVO_CARGO}" build --quiet --release --locked --manifest-path "${shim}/Cargo.toml" --target-dir "${KALVO_CLARABEL_DIR}"
    COMMAND /usr/bin/python3 "${shim}/notices.py" "${KALVO_CARGO}" > "${clarabel_notices}"
    COMMAND ${CMAKE_STRIP} --strip-debug -o "${clarabel_library}" "${KALVO_CLARABEL_DIR}/release/libclarabel_shim.a"
    DEPENDS "${shim}/Cargo.toml" "${shim}/Cargo.lock" "${shim}/src/lib.rs" "${shim}/notices.py"
    COMMENT "Building the Clarabel crate" USES_TERMINAL VERBATIM)
add_custom_target (clarabel_crate DEPENDS "${clarabel_library}" "${clarabel_notices}")
