include("${CMAKE_CURRENT_LIST_DIR}/LoomkitProtection.cmake")

set(LOOMKIT_COMPONENT_MAP "${CMAKE_CURRENT_LIST_DIR}/component.map")

# loomkit_add_component(NAME name SOURCES file... [LIBRARIES target...] [FILES file...] [MANIFEST file])
#
# Builds a component and packs it: the shared object of SOURCES, linked with the runtime and LIBRARIES, goes with
# MANIFEST (component.json in the current source folder unless given) and FILES (paths relative to the current
# source folder, which they keep) into <build>/components/<name>.kpa. The target component_<name> is part of a
# plain build; the variable LOOMKIT_COMPONENT_<name> gets the path of the archive. Where kpa isn't built, the shared
# object alone is: the target component_<name>_library.
function(loomkit_add_component)
    cmake_parse_arguments(ARG "" "NAME;MANIFEST" "SOURCES;LIBRARIES;FILES" ${ARGN})
    if(NOT ARG_NAME OR NOT ARG_SOURCES OR ARG_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "loomkit_add_component needs NAME and SOURCES; not understood: '${ARG_UNPARSED_ARGUMENTS}'")
    endif()
    if(NOT ARG_MANIFEST)
        set(ARG_MANIFEST component.json)
    endif()

    # The runtime is in the process already when a component is loaded, and is found by its name; nothing else of it
    # is needed, and no path of the build folder belongs into an archive.
    set(library component_${ARG_NAME}_library)
    add_library(${library} MODULE ${ARG_SOURCES})
    target_link_libraries(${library} PRIVATE ${ARG_LIBRARIES} loomkit::krt)
    target_compile_options(${library} PRIVATE ${LOOMKIT_PROTECTION})
    target_link_options(${library} BEFORE PRIVATE
        LINKER:--as-needed LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack
        "LINKER:--version-script=${LOOMKIT_COMPONENT_MAP}")
    set_target_properties(${library} PROPERTIES
        PREFIX ""
        OUTPUT_NAME ${ARG_NAME}
        LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/components/${ARG_NAME}.lib"
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        SKIP_BUILD_RPATH ON)

    if(NOT TARGET kpa)
        return()
    endif()
    string(TOLOWER "${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR}" platform)
    set(folder "${CMAKE_BINARY_DIR}/components/${ARG_NAME}.folder")
    set(archive "${CMAKE_BINARY_DIR}/components/${ARG_NAME}.kpa")
    set(copies COMMAND "${CMAKE_COMMAND}" -E make_directory "${folder}"
               COMMAND "${CMAKE_COMMAND}" -E copy "${CMAKE_CURRENT_SOURCE_DIR}/${ARG_MANIFEST}"
                       "${folder}/component.json")
    foreach(file IN LISTS ARG_FILES)
        get_filename_component(parent "${folder}/${file}" DIRECTORY)
        list(APPEND copies COMMAND "${CMAKE_COMMAND}" -E make_directory "${parent}"
                           COMMAND "${CMAKE_COMMAND}" -E copy "${CMAKE_CURRENT_SOURCE_DIR}/${file}" "${parent}/")
    endforeach()
    add_custom_command(
        OUTPUT "${archive}"
        COMMAND "${CMAKE_COMMAND}" -E rm -rf "${folder}"
        ${copies}
        COMMAND kpa pack "${folder}" -o "${archive}" --library "${platform}=$<TARGET_FILE:${library}>"
        DEPENDS kpa ${library} ${ARG_MANIFEST} ${ARG_FILES}
        COMMENT "Packing ${ARG_NAME}.kpa"
        VERBATIM)
    add_custom_target(component_${ARG_NAME} ALL DEPENDS "${archive}")
    set(LOOMKIT_COMPONENT_${ARG_NAME} "${archive}" PARENT_SCOPE)
endfunction()
