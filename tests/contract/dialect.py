"""The compilers that the tests of this folder have: LLVM's in the dialect of the platform's own, with the
headers of mingw-w64, and those of the product."""

import concurrent.futures
import pathlib
import subprocess

TREE = pathlib.Path(__file__).resolve().parents[2]
HERE = TREE / "tests/contract"
SYSTEM = "/usr/x86_64-w64-mingw32/include"
GCC = "x86_64-w64-mingw32-g++-win32"
CLANG = "clang-19"
STRICT = ["-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Wshadow", "-Werror"]
PLATFORM = [CLANG, "--target=x86_64-pc-windows-msvc", "-isystem", SYSTEM, "-include", str(HERE / "platform.h")]


def run(command, text=""):
    return subprocess.run(command, input=text, capture_output=True, text=True, cwd=TREE, check=False)


def what_does_not_compile(cases):
    """Of cases, each a name, a command and the text that it compiles: those that fail, and why."""
    with concurrent.futures.ThreadPoolExecutor(2) as both:
        results = both.map(lambda case: run(case[1], case[2]), cases)
        for (name, _, _), result in zip(cases, results):
            if result.returncode != 0:
                yield f"{name}:\n{result.stderr}"
    print(f"{len(cases)} compilations")
