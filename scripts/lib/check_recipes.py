#!/usr/bin/env python3
"""check_recipes.py <work folder>: the vcpkg port and the Conan recipe, as far as that works without
either tool and without a network: what they tell about the project is true, and the library can be
built with the options, and out of the files, that they name. Their own classes and functions are
stood in for by those of scripts/lib/recipes."""

import importlib.util
import json
import pathlib
import re
import shutil
import subprocess
import sys
import types

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
STAND_INS = ROOT / "scripts" / "lib" / "recipes"
sys.dont_write_bytecode = True
sys.path.insert(0, str(STAND_INS))


def version_of_project():
    listing = (ROOT / "CMakeLists.txt").read_text()
    return re.search(r"project\(ZANEngine VERSION ([0-9.]+)", listing).group(1)


def run(*command):
    done = subprocess.run([str(part) for part in command], capture_output=True, text=True)
    if done.returncode != 0:
        sys.exit(f"failed: {' '.join(map(str, command))}\n{done.stdout}{done.stderr}")


def check_port(work):
    port = ROOT / "packaging" / "vcpkg" / "ports" / "zanengine"
    manifest = json.loads((port / "vcpkg.json").read_text())
    if manifest["version"] != version_of_project():
        sys.exit(f"{port}/vcpkg.json tells version {manifest['version']}, "
                 f"the project has {version_of_project()}")
    packages = work / "vcpkg-packages"
    run("cmake", f"-DPORT_DIR={port}", f"-DCURRENT_PACKAGES_DIR={packages}",
        f"-DBUILD_DIR={work / 'vcpkg-build'}", "-P", STAND_INS / "vcpkg.cmake")
    build_consumer(work / "vcpkg-consumer", packages)


def load_recipe():
    path = ROOT / "packaging" / "conan" / "conanfile.py"
    spec = importlib.util.spec_from_file_location("recipe", path)
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    recipe = module.ZANEngineRecipe()
    recipe.recipe_folder = str(path.parent)
    return recipe


def check_recipe(work):
    recipe = load_recipe()
    recipe.set_version()
    if recipe.version != version_of_project():
        sys.exit(f"the recipe finds version {recipe.version}")
    recipe.export_sources_folder = str(work / "conan-sources")
    recipe.export_sources()
    recipe.options = types.SimpleNamespace(**recipe.default_options)
    options = [f"-D{name}={'ON' if value else 'OFF'}"
               for name, value in recipe.cmake_options().items()]
    build, prefix = work / "conan-build", work / "conan-package"
    run("cmake", "-S", recipe.export_sources_folder, "-B", build, "-G", "Ninja",
        "-DCMAKE_BUILD_TYPE=Release", f"-DCMAKE_INSTALL_PREFIX={prefix}", *options)
    run("cmake", "--build", build, "--target", "install")
    build_consumer(work / "conan-consumer", prefix)


def build_consumer(build, prefix):
    source = build.with_name(build.name + "-source")
    shutil.copytree(ROOT / "packaging" / "conan" / "test_package", source)
    run("cmake", "-S", source, "-B", build, "-G", "Ninja", f"-DCMAKE_PREFIX_PATH={prefix}")
    run("cmake", "--build", build)
    run(build / "state")


work = pathlib.Path(sys.argv[1]).resolve()
shutil.rmtree(work, ignore_errors=True)
work.mkdir(parents=True)
check_port(work)
print("the vcpkg port builds the library, and a program with it")
check_recipe(work)
print("the Conan recipe builds the library, and a program with it")
