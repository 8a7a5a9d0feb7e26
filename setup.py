"""Builds and installs the Python module zestra.

    /usr/bin/python3 -m pip install --no-build-isolation .

runs offline with Debian's setuptools and pybind11 (python3-setuptools,
python3-pybind11): CMake builds the static library from this tree, which the
extension module links. Needs the packages of the Makefile's PACKAGES.
"""

import os
import subprocess

import pybind11
from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = os.path.dirname(os.path.abspath(__file__))


def pkg_config(*arguments):
    return subprocess.check_output(["pkg-config", *arguments, "uchardet", "zlib"], text=True).split()


class BuildWithLibrary(build_ext):
    """Builds libzestra.a with CMake before the extension that links it."""

    def build_extensions(self):
        build_dir = os.path.abspath(os.path.join(self.build_temp, "zestra-library"))
        subprocess.check_call(["cmake", "-S", ROOT, "-B", build_dir, "-DCMAKE_BUILD_TYPE=Release",
                               "-DZESTRA_BUILD_TESTS=OFF", "-DZESTRA_PYTHON=OFF"])
        subprocess.check_call(["cmake", "--build", build_dir, "--target", "zestra_static",
                               "-j", str(os.cpu_count() or 1)])
        for extension in self.extensions:
            extension.extra_objects = [os.path.join(build_dir, "libzestra.a")]
            extension.extra_link_args = pkg_config("--libs")
        super().build_extensions()


setup(
    name="zestra",
    version="0.1.0",
    description="The main text of HTML pages and web archives",
    package_dir={"": "python"},
    packages=["zestra"],
    package_data={"zestra": ["*.pyi", "py.typed"]},
    ext_modules=[Extension("zestra._zestra", [os.path.join("python", "src", "module.cc")],
                           include_dirs=[pybind11.get_include(), os.path.join(ROOT, "include")],
                           extra_compile_args=["-std=c++20", "-fvisibility=hidden"],
                           language="c++")],
    cmdclass={"build_ext": BuildWithLibrary},
    python_requires=">=3.9",
)
