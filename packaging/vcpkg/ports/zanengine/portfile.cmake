# The library. The port is an overlay that stands in the project's own tree and builds that tree.
get_filename_component(SOURCE_PATH "${CMAKE_CURRENT_LIST_DIR}/../../../.." ABSOLUTE)

# Adapter modules need a shared library: with a static one each would have a facade of its own.
vcpkg_check_linkage(ONLY_DYNAMIC_LIBRARY)

vcpkg_cmake_configure(
    SOURCE_PATH "${SOURCE_PATH}"
    OPTIONS
        -DBUILD_SHARED_LIBS=ON
        -DZAN_INSTALL=ON
        -DZAN_BUILD_SERVER=OFF
        -DZAN_BUILD_TRANSPORTS=OFF
        -DZAN_BUILD_APPS=OFF
        -DZAN_BUILD_TESTS=OFF
        -DZAN_BUILD_BENCHMARKS=OFF
        -DZAN_BUILD_EXAMPLES=OFF)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(PACKAGE_NAME ZANEngine CONFIG_PATH lib/cmake/ZANEngine)
vcpkg_fixup_pkgconfig()

file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include" "${CURRENT_PACKAGES_DIR}/debug/share")
file(INSTALL "${CMAKE_CURRENT_LIST_DIR}/usage" DESTINATION "${CURRENT_PACKAGES_DIR}/share/${PORT}")
