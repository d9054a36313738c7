"""Writes the source of a DLL that does nothing and imports what another DLL imports.

empty_dll.py OBJDUMP DLL SOURCE
"""
import re
import subprocess
import sys


def imports_of(objdump, dll):
    """The names of the functions that the DLL imports, in order."""
    text = subprocess.run([objdump, "-p", dll], check=True, capture_output=True, text=True).stdout
    table = text[text.index("The Import Tables"):text.index("The Export Tables")]
    return re.findall(r"^\t[0-9a-f]+\s+\d+\s+(\S+)$", table, re.MULTILINE)


def main():
    objdump, dll, source = sys.argv[1:]
    names = imports_of(objdump, dll)
    lines = [f"extern const void* const __imp_{name};" for name in names]
    lines += ["extern const void* const* const kept[];",
              "__attribute__((used)) const void* const* const kept[] = {",
              *(f"    &__imp_{name}," for name in names), "};"]
    with open(source, "w", encoding="ascii") as file:
        file.write("\n".join(lines) + "\n")


main()
