# What `cmake --install` puts in place: the library and its headers, the adapter modules, the
# programs, the adapter kit, the CMake package ZANEngine, the pkg-config file zanengine and the
# documents. The components are those of the packages: runtime, devel, transports, tools, doc.

option(ZAN_INSTALL "Make the install rules" ${PROJECT_IS_TOP_LEVEL})

# Installed with the package; a project that has this one as a subproject gets it as well.
include(ZANEngineModules)

target_sources(zanengine PUBLIC FILE_SET HEADERS
    BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${PROJECT_SOURCE_DIR}/zanengine.h)

# The checks of scripts/ci read which headers are public.
get_target_property(public_headers zanengine HEADER_SET)
list(JOIN public_headers "\n" public_headers)
file(WRITE ${PROJECT_BINARY_DIR}/public_headers.txt "${public_headers}\n")

# zan_targets_below(<result> <folder> <type>): the targets of a type that are made in a folder of
# the project or below it.
function(zan_targets_below result folder type)
    set(found)
    get_directory_property(targets DIRECTORY ${folder} BUILDSYSTEM_TARGETS)
    foreach(target IN LISTS targets)
        get_target_property(target_type ${target} TYPE)
        if(target_type STREQUAL type)
            list(APPEND found ${target})
        endif()
    endforeach()
    get_directory_property(subfolders DIRECTORY ${folder} SUBDIRECTORIES)
    foreach(subfolder IN LISTS subfolders)
        zan_targets_below(below ${subfolder} ${type})
        list(APPEND found ${below})
    endforeach()
    set(${result} ${found} PARENT_SCOPE)
endfunction()

function(zan_install_library package_dir)
    install(TARGETS zanengine EXPORT ZANEngineTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
            COMPONENT runtime NAMELINK_COMPONENT devel
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT devel
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zanengine
        FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zanengine COMPONENT devel)
    install(EXPORT ZANEngineTargets NAMESPACE ZANEngine:: DESTINATION ${package_dir}
        COMPONENT devel)
endfunction()

# Modules and programs find the library beside them, wherever the prefix is moved to. They are built
# with the RUNPATH that they are installed with: one that CMake keeps room in for a later change ends
# in empty entries, and these make the loader look into the working folder.
function(zan_find_library_beside)
    set_target_properties(${ARGN} PROPERTIES BUILD_WITH_INSTALL_RPATH ON)
    foreach(target IN LISTS ARGN)
        get_target_property(type ${target} TYPE)
        if(type STREQUAL EXECUTABLE)
            file(RELATIVE_PATH installed ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
            file(RELATIVE_PATH built ${ZAN_BINARY_DIR} ${ZAN_LIBRARY_DIR})
            set(folders "$ORIGIN/${installed}" "$ORIGIN/${built}")
            list(REMOVE_DUPLICATES folders)
        else()
            set(folders "$ORIGIN/..")
        endif()
        set_target_properties(${target} PROPERTIES INSTALL_RPATH "${folders}")
    endforeach()
endfunction()

function(zan_install_modules_and_programs)
    if(ZAN_BUILD_TRANSPORTS)
        zan_targets_below(modules ${PROJECT_SOURCE_DIR}/transports MODULE_LIBRARY)
    endif()
    if(ZAN_BUILD_APPS)
        zan_targets_below(programs ${PROJECT_SOURCE_DIR}/apps EXECUTABLE)
    endif()
    if(modules)
        zan_find_library_beside(${modules})
        install(TARGETS ${modules} DESTINATION ${CMAKE_INSTALL_LIBDIR}/zanengine
            COMPONENT transports)
    endif()
    if(programs)
        zan_find_library_beside(${programs})
        install(TARGETS ${programs} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
    endif()
endfunction()

# What goes with the program zan, in the places where man and the shells look.
function(zan_install_guides)
    if(NOT TARGET zan_guides)
        return()
    endif()
    set(guides ${PROJECT_BINARY_DIR}/apps/zan/guides)
    install(FILES ${guides}/zan.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
    install(FILES ${guides}/zan
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)
    install(FILES ${guides}/_zan
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions COMPONENT tools)
    install(FILES ${guides}/zan.fish
        DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT tools)
endfunction()

# The adapter kit: a library of its own export, because it needs GoogleTest, its program, and the
# adapters to begin with. A GoogleTest that was built here cannot be found by others.
function(zan_install_conformance package_dir)
    if(NOT TARGET zan_conformance OR TARGET gtest)
        return()
    endif()
    zan_find_library_beside(zan-conformance faultengineadapter)
    install(TARGETS zan-conformance DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
    install(TARGETS faultengineadapter DESTINATION ${CMAKE_INSTALL_LIBDIR}/zanengine
        COMPONENT tools)
    install(TARGETS zan_conformance EXPORT ZANEngineConformanceTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT devel
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zanengine
        FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zanengine COMPONENT devel)
    install(EXPORT ZANEngineConformanceTargets NAMESPACE ZANEngine:: DESTINATION ${package_dir}
        COMPONENT devel)
    install(DIRECTORY
        ${PROJECT_SOURCE_DIR}/examples/adapter-template
        ${PROJECT_SOURCE_DIR}/examples/adapter
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zanengine COMPONENT devel)
endfunction()

function(zan_install_package package_dir)
    include(CMakePackageConfigHelpers)
    configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/ZANEngineConfig.cmake.in
        ${PROJECT_BINARY_DIR}/ZANEngineConfig.cmake
        INSTALL_DESTINATION ${package_dir}
        PATH_VARS CMAKE_INSTALL_LIBDIR)
    write_basic_package_version_file(${PROJECT_BINARY_DIR}/ZANEngineConfigVersion.cmake
        COMPATIBILITY SameMinorVersion)
    install(FILES
        ${PROJECT_BINARY_DIR}/ZANEngineConfig.cmake
        ${PROJECT_BINARY_DIR}/ZANEngineConfigVersion.cmake
        ${PROJECT_SOURCE_DIR}/cmake/ZANEngineModules.cmake
        DESTINATION ${package_dir} COMPONENT devel)
endfunction()

function(zan_install_pkg_config)
    set(pkg_config_dir ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
    file(RELATIVE_PATH prefix_of_pc ${pkg_config_dir} ${CMAKE_INSTALL_PREFIX})
    string(REGEX REPLACE "/$" "" prefix_of_pc "${prefix_of_pc}")
    file(RELATIVE_PATH libdir_of_prefix ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
    file(RELATIVE_PATH includedir_of_prefix
        ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
    set(pc_flags "")
    if(ZAN_ATOMIC_COUNTS)
        set(pc_flags " -DZAN_ATOMIC_COUNTS=1")
    endif()
    # Without a shared library the loader and the threads are the program's to link.
    if(BUILD_SHARED_LIBS)
        set(pc_libs "-pthread")
        set(pc_private_libs "-ldl")
    else()
        set(pc_libs "-pthread -ldl")
        set(pc_private_libs "")
    endif()
    configure_file(${PROJECT_SOURCE_DIR}/cmake/zanengine.pc.in
        ${PROJECT_BINARY_DIR}/zanengine.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/zanengine.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT devel)
endfunction()

# The pages of the headers are among them when `scripts/ci docs` has made them.
function(zan_install_documents)
    set(doc_dir ${CMAKE_INSTALL_DATAROOTDIR}/doc/zanengine)
    install(FILES README.md CHANGELOG.md CONTRIBUTING.md DESTINATION ${doc_dir} COMPONENT doc)
    install(DIRECTORY docs/ DESTINATION ${doc_dir}/docs COMPONENT doc FILES_MATCHING PATTERN "*.md")
    install(DIRECTORY examples DESTINATION ${doc_dir} COMPONENT doc)
    install(DIRECTORY build/docs/html DESTINATION ${doc_dir} COMPONENT doc OPTIONAL)
endfunction()

if(ZAN_INSTALL)
    set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ZANEngine)
    zan_install_library(${package_dir})
    zan_install_modules_and_programs()
    zan_install_guides()
    zan_install_conformance(${package_dir})
    zan_install_package(${package_dir})
    zan_install_pkg_config()
    zan_install_documents()
    include(ZanPackages)
endif()
