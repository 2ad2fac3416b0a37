# SPDX-License-Identifier: Apache-2.0
"""Installs the library into a temporary place, moves it, and builds and runs a host against it there.

It is moved because an installed copy may be, and so that nothing is found only because it is where it was built.
"""

import argparse
import os
import shlex
import subprocess
import sys
import tempfile
from pathlib import Path

HOST = Path(__file__).parent / "host"


def call(*command, **environment):
    done = subprocess.run([str(part) for part in command], env={**os.environ, **environment}, text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL)
    if done.returncode != 0:
        sys.exit(f"{shlex.join(map(str, command))}\n{done.stdout}failed with {done.returncode}")
    return done.stdout


def install(arguments, folder):
    call(arguments.cmake, "--install", arguments.build, "--prefix", folder / "first")
    return (folder / "first").rename(folder / "prefix")


def with_cmake(arguments, prefix, folder):
    call(arguments.cmake, "-S", HOST, "-B", folder / "build", "-G", "Ninja", f"-DCMAKE_PREFIX_PATH={prefix}",
         f"-DCMAKE_CXX_COMPILER={arguments.compiler}", f"-DCMAKE_CXX_FLAGS={arguments.flags}",
         "-DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF")
    call(arguments.cmake, "--build", folder / "build")
    return [folder / "build/host", folder / "build/hostTests"], {}


def with_pkgconfig(arguments, prefix, folder):
    libraries = prefix / arguments.libdir
    found = call("pkg-config", "--cflags", "--libs", "vorlan-foundation", PKG_CONFIG_PATH=str(libraries / "pkgconfig"))
    call(arguments.compiler, "-std=c++20", *shlex.split(arguments.flags), HOST / "main.cpp", "-o", folder / "host",
         *shlex.split(found))
    return [folder / "host"], {"LD_LIBRARY_PATH": str(libraries)}


def require_independence(program, environment, source):
    """A host of the installed copy must load nothing from the tree that it was built in."""
    loaded = call(program, LD_TRACE_LOADED_OBJECTS="1", **environment)
    for line in loaded.split("\n"):
        if f" {source}/" in line or "not found" in line:
            sys.exit(f"the installed copy is not complete:{line}")
    if "libVorlanFoundation.so.0.1 " not in loaded:
        sys.exit(f"the host does not load the library by its name:\n{loaded}")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--way", choices=("cmake", "pkgconfig"), required=True)
    for name in ("build", "source", "cmake", "libdir", "compiler", "flags"):
        parser.add_argument("--" + name, required=True)
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="vorlan-consumer-") as folder:
        folder = Path(folder).resolve()
        prefix = install(arguments, folder)
        programs, environment = (with_cmake if arguments.way == "cmake" else with_pkgconfig)(arguments, prefix, folder)
        for program in programs:
            require_independence(program, environment, arguments.source)
            print(call(program, **environment), end="")


if __name__ == "__main__":
    main()
