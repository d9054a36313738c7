#!/usr/bin/env python3
"""What ships can be guarded by the system and read in a debugger: symbols.py PACKAGE TREE

Each program of PACKAGE has the marks that the loader looks for, and its symbols tell functions,
files of TREE and lines, but not where it was built.
"""

import json
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

LLVM = "-19"
LAYERS = ("interface", "launch", "logging", "messaging", "support")
MARKS = ("DYNAMIC_BASE", "GUARD_CF", "HIGH_ENTROPY_VA", "NX_COMPAT", "EX_CET_COMPAT")
# The marks of the table that says where calls by address may go.
GUARD_FLAGS = ("CF_INSTRUMENTED", "CF_FUNCTION_TABLE_PRESENT")


def output_of(tool, *arguments, **more):
    return subprocess.run([tool + LLVM, *arguments], check=True, capture_output=True, text=True,
                          **more).stdout


def only(pattern, text):
    found = re.findall(pattern, text)
    assert len(found) == 1, (pattern, found)
    return found[0]


def check_marks(program):
    told = output_of("llvm-readobj", "--file-headers", "--coff-debug-directory",
                     "--coff-load-config", program)
    for mark in MARKS:
        assert f"IMAGE_DLL_CHARACTERISTICS_{mark} " in told, f"{program} lacks {mark}"
    for flag in GUARD_FLAGS:
        assert f" {flag} " in told, f"{program} lacks {flag}"
    assert only(r"DependentLoadFlags: (\S+)", told) == "0x800", program
    table = told[told.index("GuardFidTable ["):]
    assert int(only(r"GuardCFFunctionCount: (\d+)", told)) == table.count("0x") > 10, program
    # Old systems of this processor load it too.
    assert only(r"MajorSubsystemVersion: (\d+)", told) == "5", program
    return only(r"PDBGUID: (\S+)", told), only(r"PDBFileName: (\S+)", told)


def check_symbols(program, symbols, tree):
    guid, name = check_marks(program)
    assert name == symbols.name, (name, symbols.name)
    assert only(r"GUID: (\S+)", output_of("llvm-pdbutil", "dump", "--summary", symbols)) == guid
    # In both widths of text.
    for place in (str(tree), str(tree).replace("/", "\\")):
        for code in ("utf-8", "utf-16-le"):
            for file in (program, symbols):
                assert place.encode(code) not in file.read_bytes(), f"{file} tells {place}"


def check_lines(program, symbols, tree):
    """An address of each layer's code leads to a function, its file and its line."""
    text = output_of("llvm-readobj", "--sections", program)
    code = text[text.index("Name: .text"):]
    size, begin = (int(re.search(field + r": (\S+)", code)[1], 16)
                   for field in ("VirtualSize", "VirtualAddress"))
    addresses = "\n".join(hex(begin + offset) for offset in range(0, size, 16))
    with tempfile.TemporaryDirectory() as together:
        for file in (program, symbols):
            shutil.copy(file, together)
        told = output_of("llvm-symbolizer", "--relative-address", "--no-inlines",
                         "--output-style=JSON", "--obj", pathlib.Path(together) / program.name,
                         input=addresses)
    missing = set(LAYERS)
    for line in told.splitlines():
        for place in json.loads(line).get("Symbol", []):
            missing.discard(layer_of(place, tree))
    assert not missing, f"no line of {missing} can be told"


def layer_of(place, tree):
    """The folder of src/ whose function this place is in, when its line is in that file."""
    found = re.search(r"\bsrc\\(\w+)\\(\w+\.cpp)$", place["FileName"])
    if not found:
        return None
    lines = (tree / "src" / found[1] / found[2]).read_text().splitlines()
    function = re.sub(r"\(.*", "", place["FunctionName"]).split("::")[-1]
    text = "\n".join(lines)
    return found[1] if function and function in text and 0 < place["Line"] <= len(lines) else None


def main():
    package, tree = map(pathlib.Path, sys.argv[1:])
    programs = [file for folder in ("bin", "demo", "driver") for file in sorted((package / folder).iterdir())
                if file.suffix.lower() in (".dll", ".exe")]
    assert len(programs) > 10
    for program in programs:
        # The companion is one program under two names.
        name = re.sub("NEMB$", "DRAL", program.stem)
        check_symbols(program, package / "symbols" / f"{name}.pdb", tree)
    check_lines(package / "bin" / "DEMOvok.dll", package / "symbols" / "DEMOvok.pdb", tree)


main()
