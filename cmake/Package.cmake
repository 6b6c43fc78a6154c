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
"look into live Quask tables by program
Quask tables are lock-free hash tables in shared memory. quask-json prints the
reports of quask as JSON, one text per line, with a JSON Schema for each report:
for jq, for monitoring and for scripts.")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_QUASK_PACKAGE_NAME quask)
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME quask-tools)

# The debug information is not packed: a package of CPack's for it would hold paths of the machine
# that built it. The tool in the build directory keeps it, under the same build id.
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${QUASK_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

if(QUASK_DEBIAN_LAYOUT)
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
    if(QUASK_HAS_STATIC_PIE)
        set(overrides
            "# The programs are linked statically and are position-independent: that looks like a shared library.\n")
        foreach(program IN LISTS ARGN)
            string(APPEND overrides "${package}: shared-library-lacks-prerequisites [usr/bin/${program}]\n")
        endforeach()
        file(CONFIGURE OUTPUT ${documents}/lintian-overrides.${package} CONTENT "${overrides}")
        install(FILES ${documents}/lintian-overrides.${package} COMPONENT ${component}
            DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME ${package})
    endif()
endfunction()
quask_debian_documents(quask quask quask)
