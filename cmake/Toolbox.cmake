# The toolbox folder beside its module and libraries: the .m files, the examples, the notices.

set (toolbox_source "${CMAKE_SOURCE_DIR}/toolbox")
file (GLOB_RECURSE toolbox_files CONFIGURE_DEPENDS RELATIVE "${toolbox_source}"
    "${toolbox_source}/*.m" "${toolbox_source}/examples/*")
foreach (file IN LISTS toolbox_files)
    add_custom_command (OUTPUT "${KALVO_TOOLBOX_DIR}/${file}"
        COMMAND ${CMAKE_COMMAND} -E copy "${toolbox_source}/${file}" "${KALVO_TOOLBOX_DIR}/${file}"
        DEPENDS "${toolbox_source}/${file}" VERBATIM)
    list (APPEND toolbox_copies "${KALVO_TOOLBOX_DIR}/${file}")
endforeach ()

# The engines' own licence files come from their packages, the long texts of licences from Debian.
set (notices "${KALVO_TOOLBOX_DIR}/NOTICES")
set (notices_parts
    "${toolbox_source}/NOTICES"
    "${CMAKE_SOURCE_DIR}/LICENSE"
    "${highs_dist}/share/doc/HIGHS/LICENSE.txt"
    "${KALVO_ENGINES_DIR}/highspy_extras-1.15.1.dist-info/licenses/THIRD_PARTY_NOTICES.md"
    "${piqp_folder}/LICENSE"
    "${clarabel_notices}"
    "${CMAKE_SOURCE_DIR}/cmake/licences.txt"
    /usr/share/common-licenses/Apache-2.0
    /usr/share/common-licenses/MPL-2.0)
add_custom_command (OUTPUT "${notices}"
    COMMAND ${CMAKE_COMMAND} -E cat ${notices_parts} > "${notices}"
    DEPENDS ${notices_parts} VERBATIM)

add_custom_target (toolbox ALL DEPENDS ${toolbox_copies} "${notices}")
add_dependencies (toolbox toolbox_highs clarabel_crate kalvo-worker)
if (TARGET kalvoopt)
    add_dependencies (toolbox kalvoopt)
endif ()
