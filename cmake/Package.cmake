# The Debian package. scripts/package builds it.

set(QUASK_MAINTAINER "quask maintainers <maintainers@quask.invalid>" CACHE STRING
    "Name and address of who maintains the package")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quask)
set(CPACK_PACKAGE_VENDOR "quask maintainers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "look into live Quask tables")
set(CPACK_PACKAGE_DESCRIPTION
"Quask tables are lock-free hash tables in shared memory. quask prints the
chains of a table, the headers of its files and the processes that have it
mapped, while the table's writer keeps changing it. It maps the files read-only
and takes no lock.")

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
    configure_file(${PROJECT_SOURCE_DIR}/packaging/changelog.in ${documents}/changelog @ONLY)
    quask_install_document(${documents}/changelog changelog ${CMAKE_INSTALL_DOCDIR})
    install(FILES ${PROJECT_SOURCE_DIR}/packaging/copyright DESTINATION ${CMAKE_INSTALL_DOCDIR})
    if(QUASK_HAS_STATIC_PIE)
        install(FILES ${PROJECT_SOURCE_DIR}/packaging/lintian-overrides
            DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME quask)
    endif()
endif()

include(CPack)
