# What is installed beside the tool: manual pages, completions, documentation.

# The manual pages and completions of a tool that was built for the root directory `root`, into the
# directory `output`.
function(quask_configure_documents root output)
    foreach(page IN ITEMS quask.1 quask-table.5)
        set_property(DIRECTORY APPEND PROPERTY
            CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/man/${page})
        # The pages in the repository can be read as they are: they name the default root directory, and
        # no version.
        file(READ ${PROJECT_SOURCE_DIR}/man/${page} text)
        string(REPLACE "\\" "\\e" quoted_root "${root}")
        string(REPLACE "/dev/shm/quask" "${quoted_root}" text "${text}")
        string(REPLACE "\n.Os\n" "\n.Os quask ${PROJECT_VERSION}\n" text "${text}")
        file(CONFIGURE OUTPUT ${output}/${page} CONTENT "${text}" @ONLY)
    endforeach()

    string(REPLACE "'" "'\\''" quoted_root "${root}")
    set(QUASK_ROOT_DIR_QUOTED "'${quoted_root}'")
    string(REGEX REPLACE "(['\\\\])" "\\\\\\1" quoted_root "${root}")
    set(QUASK_ROOT_DIR_FISH "'${quoted_root}'")
    foreach(completion IN ITEMS quask.bash _quask quask.fish)
        configure_file(${PROJECT_SOURCE_DIR}/completions/${completion}.in
            ${output}/${completion} @ONLY)
    endforeach()
endfunction()

set(documents ${PROJECT_BINARY_DIR}/documents)
quask_configure_documents("${QUASK_ROOT_DIR}" ${documents})

install(FILES ${documents}/quask.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME quask)
install(FILES ${documents}/_quask DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
install(FILES ${documents}/quask.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)

option(QUASK_DEBIAN_LAYOUT
    "Install what Debian wants of a package: compressed manual pages, copyright, changelog" OFF)

# Installs a file as `name`, or compressed as `name`.gz.
function(quask_install_document file name destination)
    if(NOT QUASK_DEBIAN_LAYOUT)
        install(FILES ${file} DESTINATION ${destination} RENAME ${name})
        return()
    endif()
    find_program(GZIP gzip REQUIRED)
    set(compressed ${documents}/compressed/${name}.gz)
    file(MAKE_DIRECTORY ${documents}/compressed)
    add_custom_command(OUTPUT ${compressed}
        COMMAND ${GZIP} -9nc ${file} > ${compressed} DEPENDS ${file} VERBATIM)
    add_custom_target(compress_${name} ALL DEPENDS ${compressed})
    install(FILES ${compressed} DESTINATION ${destination})
endfunction()

quask_install_document(${documents}/quask.1 quask.1 ${CMAKE_INSTALL_MANDIR}/man1)
quask_install_document(${documents}/quask-table.5 quask-table.5 ${CMAKE_INSTALL_MANDIR}/man5)
install(FILES README.md CHANGELOG.md CONTRIBUTING.md SECURITY.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES docs/ARCHITECTURE.md docs/diagnosis.md docs/faults.md docs/performance.md
    DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs)
