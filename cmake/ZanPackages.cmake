# What `cpack`, run in a build tree, makes: Debian packages, one a component of the installation.

set(ZAN_PACKAGE_CONTACT "ZAN engine client developers <root@localhost>" CACHE STRING
    "The maintainer that the packages name")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zanengine)
set(CPACK_PACKAGE_CONTACT ${ZAN_PACKAGE_CONTACT})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_OUTPUT_FILE_PREFIX packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_COMPONENTS_ALL runtime devel transports tools doc)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Where the library lies that no installed package has.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${ZAN_LIBRARY_DIR})

# zan_package(<component> <package> SECTION <section> SUMMARY <line> TEXT <sentences>)
macro(zan_package component package)
    cmake_parse_arguments(PACKAGE "" "SECTION;SUMMARY;TEXT" "" ${ARGN})
    string(TOUPPER ${component} key)
    set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${package})
    set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${PACKAGE_SECTION})
    set(CPACK_COMPONENT_${key}_DESCRIPTION "${PACKAGE_SUMMARY}\n${PACKAGE_TEXT}")
endmacro()

set(runtime_package libzanengine${ZAN_SONAME})
set(same_runtime
    "${runtime_package} (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

zan_package(runtime ${runtime_package} SECTION libs
    SUMMARY "client library for a messaging engine"
    TEXT "Named connections to counterparties, FIX messages out and in, events to listeners.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS zanengine-transports)

zan_package(devel libzanengine-dev SECTION libdevel
    SUMMARY "client library for a messaging engine, for development"
    TEXT "The headers, the CMake package ZANEngine and the pkg-config file zanengine.")
set(CPACK_DEBIAN_DEVEL_PACKAGE_DEPENDS ${same_runtime})
set(CPACK_DEBIAN_DEVEL_PACKAGE_SUGGESTS "zanengine-doc, libgtest-dev")

zan_package(transports zanengine-transports SECTION libs
    SUMMARY "adapter modules of the ZAN engine client"
    TEXT "With them the library reaches engines; `embedded' is an engine in the application.")
set(CPACK_DEBIAN_TRANSPORTS_PACKAGE_DEPENDS ${same_runtime})

zan_package(tools zanengine-tools SECTION utils
    SUMMARY "programs of the ZAN engine client"
    TEXT "A counterparty that fills orders, and what else is used from a command line.")
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS ${same_runtime})
set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS zanengine-transports)

zan_package(doc zanengine-doc SECTION doc
    SUMMARY "documents of the ZAN engine client"
    TEXT "Guides, examples, and the reference of the headers.")
set(CPACK_DEBIAN_DOC_PACKAGE_ARCHITECTURE all)

include(CPack)
