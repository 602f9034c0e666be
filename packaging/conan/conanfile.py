"""The Conan recipe of the library. It stands in the project's own tree: `conan create packaging/conan`."""

import os
import re

from conan import ConanFile
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy, load

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")


class ZANEngineRecipe(ConanFile):
    name = "zanengine"
    description = "Client library for a messaging engine"
    package_type = "library"
    settings = "os", "compiler", "build_type", "arch"
    options = {"shared": [True, False], "atomic_counts": [True, False]}
    default_options = {"shared": True, "atomic_counts": False}

    def set_version(self):
        listing = load(self, os.path.join(self.recipe_folder, "..", "..", "CMakeLists.txt"))
        self.version = re.search(r"project\(ZANEngine VERSION ([0-9.]+)", listing).group(1)

    def export_sources(self):
        for pattern in ("CMakeLists.txt", "zanengine.h", "cmake/*", "docs/*", "*.md", "infra/*",
                        "errors/*", "message/*", "events/*", "adapter/*", "engine/*",
                        "guaranteed/*", "comfort/*", "examples/*"):
            copy(self, pattern, src=ROOT, dst=self.export_sources_folder)

    def layout(self):
        cmake_layout(self)

    def generate(self):
        CMakeDeps(self).generate()
        toolchain = CMakeToolchain(self)
        toolchain.variables.update(self.cmake_options())
        toolchain.generate()

    def cmake_options(self):
        """The options of our CMake files that the recipe's options stand for."""
        return {"BUILD_SHARED_LIBS": bool(self.options.shared), "ZAN_INSTALL": True,
                "ZAN_ATOMIC_COUNTS": bool(self.options.atomic_counts),
                "ZAN_BUILD_SERVER": False, "ZAN_BUILD_TRANSPORTS": False, "ZAN_BUILD_APPS": False,
                "ZAN_BUILD_TESTS": False, "ZAN_BUILD_BENCHMARKS": False,
                "ZAN_BUILD_EXAMPLES": False}

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()

    def package_info(self):
        self.cpp_info.libs = ["zanengine"]
        self.cpp_info.includedirs = ["include/zanengine"]
        self.cpp_info.system_libs = ["pthread", "dl"]
        self.cpp_info.set_property("cmake_file_name", "ZANEngine")
        self.cpp_info.set_property("cmake_target_name", "ZANEngine::ZANEngine")
        self.cpp_info.set_property("pkg_config_name", "zanengine")
        if self.options.atomic_counts:
            self.cpp_info.defines = ["ZAN_ATOMIC_COUNTS=1"]
