#!/usr/bin/env python3
"""The public headers compile as every C and C++, by every compiler that can be had, and leave nothing
behind: compiles.py"""

import itertools
import re
import sys

from dialect import CLANG, HERE, PLATFORM, STRICT, SYSTEM, TREE, run, what_does_not_compile

OURS = ["-I", str(TREE / "include"), "-I", str(TREE / "samples"), "-I", str(TREE / "tests/contract"), '-DVOK_MODEL_PREFIX="DEMO"']
DIALECT = [*PLATFORM, *OURS]
EVERY = ("c89", "c99", "c11", "c17", "c++11", "c++14", "c++17", "c++20")
OLDEST_AND_NEWEST = ("c89", "c17", "c++11", "c++20")
COMPILERS = {
    "the platform's": (DIALECT, EVERY),
    "the platform's, /Gv": ([*DIALECT, "-Xclang", "-fdefault-calling-conv=vectorcall"], EVERY),
    "clang": ([CLANG, "--target=x86_64-w64-mingw32", *OURS], OLDEST_AND_NEWEST),
    "gcc": (["x86_64-w64-mingw32-gcc-win32", *OURS], OLDEST_AND_NEWEST),
}
CL = ["clang-19", "--driver-mode=cl", "--target=x86_64-pc-windows-msvc", "/nologo", "/Zs", "/W4", "/WX", "/permissive-",
      "/Zc:__cplusplus", *OURS, "/imsvc", SYSTEM, "/FI", str(HERE / "platform.h")]
CL_STANDARDS = ("c11", "c17", "c++14", "c++17", "c++20", "c++latest")
HEADERS = ("vok", "companion", "config_library")
CONSUMER = (TREE / "tests/contract/linked.c").read_text()
# A consumer with windows.h after our headers, and before.
ORDERS = {
    "ours first": CONSUMER,
    "windows.h first": "#include <windows.h>\n" + CONSUMER,
}
PART = "#define WIN32_LEAN_AND_MEAN\n#include <windows.h>\n#include <winspool.h>\n" + CONSUMER


def language(standard):
    return "c++" if "+" in standard else "c"


def check(compiler, standard, text):
    words, _ = COMPILERS[compiler]
    return [*words, *STRICT, f"-std={standard}", "-fsyntax-only", "-x", language(standard), "-"], text


def cases():
    for compiler, (_, standards) in COMPILERS.items():
        for standard, (order, text) in itertools.product(standards, ORDERS.items()):
            yield f"{compiler}, {standard}, {order}", *check(compiler, standard, text)
    for standard in OLDEST_AND_NEWEST:
        yield f"a part of windows.h, {standard}", *check("the platform's", standard, PART)
        for header in HEADERS:
            include = f"#include <vok/{header}.h>\n"
            yield f"{header}.h alone, {standard}", *check("the platform's", standard, include + include)
    for standard, convention in itertools.product(CL_STANDARDS, ("/Gd", "/Gv")):
        kind = "/TP" if "+" in standard else "/TC"
        yield f"cl, {standard}, {convention}", [*CL, f"/std:{standard}", convention, kind, "-"], CONSUMER


def macros(text):
    result = run([*DIALECT, "-dM", "-E", "-x", "c", "-"], text)
    assert result.returncode == 0, result.stderr
    return set(re.findall(r"^#define (\w+)", result.stdout, re.M))


def what_leaks():
    everything = "".join(f"#include <vok/{header}.h>\n" for header in HEADERS)
    system = macros("#include <windows.h>\n")
    defined = macros(everything)
    for name in sorted(defined - system):
        if not name.startswith("VOK_"):
            yield f"our headers define {name}"
    for name in sorted(system - defined):
        yield f"our headers keep {name} of windows.h from being defined"


# An annotation that this compiler understands in the place of one that it does not.
ANNOTATED = """
#include <windows.h>
#undef _In_reads_bytes_
#define _In_reads_bytes_(size) __attribute__((nonnull))
#include <vok/vok.h>
void use(VKDATA* job, const BYTE* data);
void use(VKDATA* job, const BYTE* data) {
    (void)job; (void)data;
"""
ALLOWED = ("VOKLaunchXFiles(NULL, NULL, NULL)", "VOKSendDralMsg(data, SM_OPENJOB, NULL)",
           "VOKSendMsgEx(NULL, NULL, 0, 0, data, 1)")
WRONG = ("VOKSendDralMsg(NULL, SM_OPENJOB, job)", "VOKSendNembMsg(NULL, SM_OPENJOB, job)",
         "VOKSendMsgEx(NULL, NULL, 0, 0, NULL, 1)")
# Prototypes, and the types of the pointers to them.
TYPES = {"VOKLaunchXFiles": "VOKLaunchXFilesFn", "VOKSendDralMsg": "VOKSendMsgFn",
         "VOKSendMsgEx": "VOKSendMsgExFn", "VOKGetDral": "VOKGetFn", "VOKGetNemb": "VOKGetFn"}


def declared(name):
    """How the header declares it: its convention and its annotations."""
    text = (TREE / "include/vok/vok.h").read_text()
    declaration, = re.findall(rf"^(?:VOK_|typedef)[^;]*\b{name}\)?\([^;]*;", text, re.M)
    return re.findall(r"__cdecl|VOK_SAL\(\w+", declaration)


def what_is_not_annotated():
    command = [*DIALECT, *STRICT, "-Wno-error", "-fsyntax-only", "-x", "c", "-"]
    for call in ALLOWED + WRONG:
        result = run(command, f"{ANNOTATED}    {call};\n}}\n")
        warned = "[-Wnonnull]" in result.stderr
        if result.returncode != 0 or warned != (call in WRONG):
            yield f"annotations are wrong at {call}:\n{result.stderr}"
    for prototype, pointer in TYPES.items():
        if "__cdecl" not in declared(pointer) or declared(prototype) != declared(pointer):
            yield f"{prototype} and {pointer} are declared differently"
    # A system header without them.
    plain = "#include <windows.h>\n#undef _In_opt_z_\n#include <vok/vok.h>\n#include <vok/config_library.h>\n"
    result = run([*command[:-1], "-D_In_reads_bytes_=error", "-"], plain)
    if result.returncode != 0:
        yield f"our headers need sal.h:\n{result.stderr}"


found = [*what_does_not_compile(list(cases())), *what_leaks(), *what_is_not_annotated()]
print("\n".join(found) or "every compiler takes the headers")
sys.exit(1 if found else 0)
