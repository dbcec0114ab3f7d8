# Puts together bundles as a Mac has them: Name.app/Contents/{Info.plist,MacOS,Resources}.

# zek_bundle(target FOLDER folder INFO template [PROGRAM target] [TOOLS target...] [RESOURCES file-or-folder...])
# A target that builds the bundle at FOLDER: the information file from its template, the program in MacOS, tools and
# resources in Resources. Resources that are bundles of their own are simply built in there.
function(zek_bundle target)
    cmake_parse_arguments(ARG "" "FOLDER;INFO;PROGRAM" "TOOLS;RESOURCES" ${ARGN})
    set(contents "${ARG_FOLDER}/Contents")
    set(info "${CMAKE_CURRENT_BINARY_DIR}/${target}-Info.plist")
    configure_file(${ARG_INFO} ${info} @ONLY)

    set(copies COMMAND ${CMAKE_COMMAND} -E make_directory "${contents}/MacOS" "${contents}/Resources"
               COMMAND ${CMAKE_COMMAND} -E copy_if_different "${info}" "${contents}/Info.plist")
    if(ARG_PROGRAM)
        list(APPEND copies COMMAND ${CMAKE_COMMAND} -E copy_if_different
                                   "$<TARGET_FILE:${ARG_PROGRAM}>" "${contents}/MacOS/")
    endif()
    foreach(tool ${ARG_TOOLS})
        list(APPEND copies COMMAND ${CMAKE_COMMAND} -E copy_if_different
                                   "$<TARGET_FILE:${tool}>" "${contents}/Resources/")
    endforeach()
    foreach(resource ${ARG_RESOURCES})
        get_filename_component(name "${resource}" NAME)
        set(copy copy_if_different)
        if(IS_DIRECTORY "${resource}")
            set(copy copy_directory)
        endif()
        list(APPEND copies COMMAND ${CMAKE_COMMAND} -E ${copy} "${resource}" "${contents}/Resources/${name}")
    endforeach()
    add_custom_target(${target} ALL ${copies} VERBATIM)
    foreach(input ${ARG_PROGRAM} ${ARG_TOOLS})
        add_dependencies(${target} ${input})
    endforeach()
endfunction()
