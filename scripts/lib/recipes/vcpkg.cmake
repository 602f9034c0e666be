# The functions of vcpkg that our port calls, for a run without vcpkg: they configure, build and
# install as vcpkg does, into CURRENT_PACKAGES_DIR, but only the release. To be run with
#   cmake -DPORT_DIR=... -DCURRENT_PACKAGES_DIR=... -DBUILD_DIR=... -P vcpkg.cmake
set(PORT zanengine)

function(vcpkg_check_linkage)
endfunction()

function(vcpkg_cmake_configure)
    cmake_parse_arguments(PORT "" "SOURCE_PATH" "OPTIONS" ${ARGN})
    execute_process(COMMAND ${CMAKE_COMMAND} -S ${PORT_SOURCE_PATH} -B ${BUILD_DIR} -G Ninja
        -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=${CURRENT_PACKAGES_DIR}
        -DCMAKE_INSTALL_LIBDIR=lib --log-level=NOTICE ${PORT_OPTIONS} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

function(vcpkg_cmake_install)
    execute_process(COMMAND ${CMAKE_COMMAND} --build ${BUILD_DIR} --target install
        OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endfunction()

function(vcpkg_cmake_config_fixup)
    cmake_parse_arguments(FIXUP "" "PACKAGE_NAME;CONFIG_PATH" "" ${ARGN})
    if(NOT EXISTS ${CURRENT_PACKAGES_DIR}/${FIXUP_CONFIG_PATH}/${FIXUP_PACKAGE_NAME}Config.cmake)
        message(FATAL_ERROR "there is no CMake package in ${FIXUP_CONFIG_PATH}")
    endif()
endfunction()

function(vcpkg_fixup_pkgconfig)
    if(NOT EXISTS ${CURRENT_PACKAGES_DIR}/lib/pkgconfig/zanengine.pc)
        message(FATAL_ERROR "there is no pkg-config file")
    endif()
endfunction()

set(CMAKE_CURRENT_LIST_DIR ${PORT_DIR})
include(${PORT_DIR}/portfile.cmake)
