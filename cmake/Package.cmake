# The Debian packages: quask, and quask-tools with the companions that are built. scripts/package builds
# them.

set(QUASK_MAINTAINER "quask maintainers <maintainers@quask.invalid>" CACHE STRING
    "Name and address of who maintains the package")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quask)
set(CPACK_PACKAGE_VENDOR "quask maintainers")
# Empty: it would come before the description of each package, whose first line is the summary.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_DEBIAN_QUASK_DESCRIPTION
"look into live Quask tables
Quask tables are lock-free hash tables in shared memory. quask prints the
chains of a table, the headers of its files and the processes that have it
mapped, while the table's writer keeps changing it. It maps the files read-only
and takes no lock.")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION
"look into live Quask tables by program, and watch them
Quask tables are lock-free hash tables in shared memory. quask-json prints
the reports of quask as JSON, one text per line, with a JSON Schema for each
report: for jq, for monitoring and for scripts. quask-stat shows how full
tables are, who writes and reads them and what is wrong with them, also at
intervals, for monitoring plug-ins and as metrics.")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_QUASK_PACKAGE_NAME quask)
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME quask-tools)

# The debug information is not packed: a package of CPack's for it would contain paths of the machine
# that built it. The tool in the build directory keeps it, with the same build id.
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${QUASK_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)

# By default CPack takes the architecture of the machine that it runs on. These are Debian's names for
# the processors that CMake names.
set(debian_names x86_64=amd64 AMD64=amd64 aarch64=arm64 ppc64le=ppc64el riscv64=riscv64)
foreach(name IN LISTS debian_names)
    if(name MATCHES "^${CMAKE_SYSTEM_PROCESSOR}=(.*)")
        set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${CMAKE_MATCH_1})
    endif()
endforeach()
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

# quask_static_sources(RESULT): the Debian sources, with versions, of the libraries that are linked
# statically, as the field Static-Built-Using has them; empty where there are none or dpkg is not the
# system's.
function(quask_static_sources result)
    set(archives)
    if(QUASK_LINKING STREQUAL "static")
        list(APPEND archives libc.a libstdc++.a libgcc.a)
    elseif(QUASK_LINKING STREQUAL "static-libstdc++")
        list(APPEND archives libstdc++.a libgcc.a)
    endif()
    set(sources)
    foreach(archive IN LISTS archives)
        execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${archive}
            OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
        get_filename_component(path "${path}" REALPATH)
        execute_process(COMMAND dpkg-query --search ${path}
            OUTPUT_VARIABLE owner ERROR_QUIET)
        string(REGEX REPLACE ": .*" "" owner "${owner}")
        execute_process(COMMAND dpkg-query --show
            "--showformat=\${source:Package} (= \${source:Version})" ${owner}
            OUTPUT_VARIABLE source ERROR_QUIET)
        list(APPEND sources ${source})
    endforeach()
    list(REMOVE_DUPLICATES sources)
    list(SORT sources)
    list(JOIN sources ", " text)
    set(${result} "${text}" PARENT_SCOPE)
endfunction()

if(QUASK_DEBIAN_LAYOUT)
    # CPack knows no field of this name, and writes the others as they are: so it follows one of them.
    quask_static_sources(sources)
    if(sources)
        string(APPEND CPACK_DEBIAN_PACKAGE_PRIORITY "\nStatic-Built-Using: ${sources}")
    endif()

    # Follows SOURCE_DATE_EPOCH.
    string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
endif()

# What Debian wants of the package of a component; the programs are those that are linked statically.
function(quask_debian_documents component package)
    if(NOT QUASK_DEBIAN_LAYOUT)
        return()
    endif()
    set(directory ${CMAKE_INSTALL_DATADIR}/doc/${package})
    configure_file(${PROJECT_SOURCE_DIR}/packaging/changelog.in ${documents}/changelog.${package} @ONLY)
    quask_install_document(${documents}/changelog.${package} changelog ${directory} ${component})
    install(FILES ${PROJECT_SOURCE_DIR}/packaging/copyright DESTINATION ${directory} COMPONENT ${component})
    if(QUASK_LINKING STREQUAL "static")
        set(overrides
            "# The programs are linked statically and are position-independent: lintian takes them for libraries.\n")
        foreach(program IN LISTS ARGN)
            string(APPEND overrides "${package}: shared-library-lacks-prerequisites [usr/bin/${program}]\n")
        endforeach()
        if(sources)
            string(APPEND overrides
                "# Newer than the lintian of Debian 12.\n${package}: unknown-field Static-Built-Using\n")
        endif()
        file(CONFIGURE OUTPUT ${documents}/lintian-overrides.${package} CONTENT "${overrides}")
        install(FILES ${documents}/lintian-overrides.${package} COMPONENT ${component}
            DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME ${package})
    endif()
endfunction()
quask_debian_documents(quask quask quask)
