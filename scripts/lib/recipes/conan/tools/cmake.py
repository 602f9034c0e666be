class CMake:
    pass


class CMakeDeps:
    pass


class CMakeToolchain:
    pass


def cmake_layout(_):
    pass
