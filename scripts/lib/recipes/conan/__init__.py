"""What our recipe uses of Conan's classes, for a run without Conan."""


class ConanFile:
    pass
