# What is installed besides the programs: manual pages, completions, schemas, documentation. What is of
# no other component belongs to "quask"; "tools" are the companions.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME quask)

# The manual pages and completions of a tool that was built for the root directory `root`, into the
# directory `output`.
function(quask_configure_documents root output)
    foreach(page IN ITEMS quask.1 quask-json.1 quask-stat.1 quask-table.5)
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
    # Each program has shell functions of its own names. quask-json takes quask's command line.
    set(directory ${PROJECT_SOURCE_DIR}/completions)
    foreach(program IN ITEMS quask quask-json quask-stat)
        set(QUASK_PROGRAM ${program})
        string(REPLACE "-" "_" QUASK_FUNCTION ${program})
        foreach(shell IN ITEMS bash zsh fish)
            set_property(DIRECTORY APPEND PROPERTY
                CMAKE_CONFIGURE_DEPENDS ${directory}/tables.${shell}.in)
            file(READ ${directory}/tables.${shell}.in tables)
            string(TOUPPER ${shell} name)
            string(CONFIGURE "${tables}" QUASK_TABLES_${name} @ONLY)
        endforeach()
        string(REPLACE "-json" "" completion ${program})
        configure_file(${directory}/${completion}.bash.in ${output}/${program}.bash @ONLY)
        configure_file(${directory}/_${completion}.in ${output}/_${program} @ONLY)
        configure_file(${directory}/${completion}.fish.in ${output}/${program}.fish @ONLY)
    endforeach()
endfunction()

set(documents ${PROJECT_BINARY_DIR}/documents)
quask_configure_documents("${QUASK_ROOT_DIR}" ${documents})

option(QUASK_DEBIAN_LAYOUT
    "Install what Debian wants of a package: compressed manual pages, copyright, changelog" OFF)

# Where the shells look, below the prefix. Only Debian's zsh has a place for packages. fish looks below
# /usr/local only if XDG_DATA_DIRS names it.
set(zsh_functions site-functions)
if(QUASK_DEBIAN_LAYOUT)
    set(zsh_functions vendor-completions)
endif()
set(QUASK_BASH_COMPLETION_DIR "${CMAKE_INSTALL_DATADIR}/bash-completion/completions"
    CACHE STRING "Where bash's completion is installed")
set(QUASK_ZSH_COMPLETION_DIR "${CMAKE_INSTALL_DATADIR}/zsh/${zsh_functions}"
    CACHE STRING "Where zsh's completion is installed")
set(QUASK_FISH_COMPLETION_DIR "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d"
    CACHE STRING "Where fish's completion is installed")

# Installs the completions of a program.
function(quask_install_completions program component)
    install(FILES ${documents}/${program}.bash COMPONENT ${component}
        DESTINATION ${QUASK_BASH_COMPLETION_DIR} RENAME ${program})
    install(FILES ${documents}/_${program} COMPONENT ${component}
        DESTINATION ${QUASK_ZSH_COMPLETION_DIR})
    install(FILES ${documents}/${program}.fish COMPONENT ${component}
        DESTINATION ${QUASK_FISH_COMPLETION_DIR})
endfunction()

# Installs a file as `name`, or compressed as `name`.gz.
function(quask_install_document file name destination component)
    if(NOT QUASK_DEBIAN_LAYOUT)
        install(FILES ${file} DESTINATION ${destination} RENAME ${name} COMPONENT ${component})
        return()
    endif()
    find_program(GZIP gzip REQUIRED)
    set(compressed ${documents}/compressed/${component}/${name}.gz)
    file(MAKE_DIRECTORY ${documents}/compressed/${component})
    add_custom_command(OUTPUT ${compressed}
        COMMAND ${GZIP} -9nc ${file} > ${compressed} DEPENDS ${file} VERBATIM)
    add_custom_target(compress_${component}_${name} ALL DEPENDS ${compressed})
    install(FILES ${compressed} DESTINATION ${destination} COMPONENT ${component})
endfunction()

quask_install_completions(quask quask)
quask_install_document(${documents}/quask.1 quask.1 ${CMAKE_INSTALL_MANDIR}/man1 quask)
quask_install_document(${documents}/quask-table.5 quask-table.5 ${CMAKE_INSTALL_MANDIR}/man5 quask)
install(FILES README.md CHANGELOG.md SECURITY.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES docs/ARCHITECTURE.md docs/diagnosis.md docs/faults.md docs/performance.md
    DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs)

# What belongs to quask-stat, if that is built.
function(quask_install_stat_documents)
    quask_install_completions(quask-stat tools)
    quask_install_document(${documents}/quask-stat.1 quask-stat.1 ${CMAKE_INSTALL_MANDIR}/man1 tools)
    install(FILES ${PROJECT_SOURCE_DIR}/schemas/details.schema.json COMPONENT tools
        DESTINATION ${CMAKE_INSTALL_DATADIR}/quask RENAME quask-stat-details.schema.json)
endfunction()

# What belongs to quask-json, if that is built.
function(quask_install_json_documents)
    quask_install_completions(quask-json tools)
    quask_install_document(${documents}/quask-json.1 quask-json.1 ${CMAKE_INSTALL_MANDIR}/man1 tools)
    foreach(report IN ITEMS scan headers clients)
        install(FILES ${PROJECT_SOURCE_DIR}/schemas/${report}.schema.json COMPONENT tools
            DESTINATION ${CMAKE_INSTALL_DATADIR}/quask RENAME quask-json-${report}.schema.json)
    endforeach()
endfunction()
