#!/usr/bin/env python3
"""The library's sources compile in the dialect of the platform's own compiler, and for its processors by
Arm, with GCC's C++ library, whose headers both Debian releases have for Windows: library.py

But for src/runtime, which mends the runtime that only our own toolchain links in. Nothing is made of it:
this says no more than that the sources keep to the language."""

import pathlib
import sys
import tempfile

from dialect import CLANG, GCC, HERE, PLATFORM, STRICT, SYSTEM, TREE, run, what_does_not_compile

OURS = ["-Iinclude", "-Isrc", "-DVOK_BUILDING_LIBRARY", *STRICT, "-std=c++20", "-fsyntax-only"]


def standard_library():
    folder = run([GCC, "-print-file-name=include/c++"]).stdout.strip()
    return ["-nostdinc++", "-isystem", folder, "-isystem", f"{folder}/x86_64-w64-mingw32"]


def targets():
    headers = standard_library()
    yield "the platform's dialect", [PLATFORM[0], *headers, *PLATFORM[1:],
                                     "-include", str(HERE / "standard_library.h")]
    yield "Arm's processors", [CLANG, "--target=aarch64-w64-mingw32", *headers, "-isystem", SYSTEM]


def sources():
    for path in sorted((TREE / "src").glob("*/*.cpp")):
        if path.parent.name != "runtime":
            yield path.relative_to(TREE).as_posix()


def precompiled(name, command, folder):
    """The command, with the system's headers as they were compiled once: a quarter of the time."""
    made = pathlib.Path(folder) / f"{name}.pch"
    words = [*command, *(word for word in OURS if word != "-fsyntax-only")]
    result = run([*words, "-x", "c++-header", "cmake/common_headers.h", "-o", str(made)])
    assert result.returncode == 0, result.stderr
    return [*command, "-include-pch", str(made)]


def contradicts():
    """A source that says otherwise than its header, as the getters once did, has to be noticed."""
    _, platform = next(targets())
    text = '#include <vok/vok.h>\nextern "C" HWND VOKGetDral(VKDATA*) { return nullptr; }\n'
    if "different language linkage" not in run([*platform, *OURS, "-x", "c++", "-"], text).stderr:
        yield "a getter that contradicts its header goes unnoticed"


with tempfile.TemporaryDirectory() as folder:
    compilers = [(name, precompiled(name, command, folder)) for name, command in targets()]
    cases = [(f"{source} in {name}" if "dialect" in name else f"{source} for {name}", [*command, *OURS, source], "")
             for name, command in compilers for source in sources()]
    found = [*what_does_not_compile(cases), *contradicts()]
print("\n".join(found) or "the library's sources compile")
sys.exit(1 if found or len(cases) < 80 else 0)
