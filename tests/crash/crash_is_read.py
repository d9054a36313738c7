#!/usr/bin/env python3
"""A dump of a host that died inside the library names function, file and line, by the symbols that ship.

crash_is_read.py WINE CRASH PRODUCT_DIR SYMBOLS_DIR TREE
"""

import json
import pathlib
import re
import shutil
import struct
import subprocess
import sys
import tempfile

MODULES, EXCEPTION = 4, 6


def streams(dump):
    """Where each kind of a dump's streams begins."""
    signature, _, count, directory = struct.unpack_from("<4sIII", dump)
    assert signature == b"MDMP", signature
    entries = struct.iter_unpack("<III", dump[directory:directory + 12 * count])
    return {kind: place for kind, _, place in entries}


def modules(dump, begin):
    """Base, size, time stamp and path of each module."""
    (count,) = struct.unpack_from("<I", dump, begin)
    for number in range(count):
        base, size, _, stamp, name = struct.unpack_from("<QIIII", dump, begin + 4 + 108 * number)
        (length,) = struct.unpack_from("<I", dump, name)
        yield base, size, stamp, dump[name + 4:name + 4 + length].decode("utf-16-le")


def place_of_crash(dump):
    """The code of the exception, and the module and the offset in it where it was raised."""
    begins = streams(dump)
    code, _, _, address = struct.unpack_from("<IIQQ", dump, begins[EXCEPTION] + 8)
    for base, size, stamp, path in modules(dump, begins[MODULES]):
        if base <= address < base + size:
            return code, path.replace("\\", "/").split("/")[-1], address - base, stamp
    raise AssertionError(f"{address:#x} is in no module")


def make_dump(wine, crash, library, folder):
    dump = folder / "host.dmp"
    subprocess.run([wine, crash, f"Z:{library}", f"Z:{dump}"], check=True,
                   stdin=subprocess.DEVNULL)
    return dump.read_bytes()


def main():
    wine, crash = sys.argv[1:3]
    product, symbols, tree = map(pathlib.Path, sys.argv[3:])
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        for file in (product / "DEMOvok.dll", symbols / "DEMOvok.pdb"):
            shutil.copy(file, folder)
        library = folder / "DEMOvok.dll"
        code, module, offset, stamp = place_of_crash(make_dump(wine, crash, library, folder))
        assert (code, module) == (0xC0000005, "DEMOvok.dll"), (hex(code), module)
        headers = subprocess.run(["llvm-readobj-19", "--file-headers", library], check=True,
                                 capture_output=True, text=True).stdout
        assert f"({stamp:#X})".replace("0X", "0x") in headers, f"{stamp:#x} is not the library's"
        told = subprocess.run(["llvm-symbolizer-19", "--relative-address", "--output-style=JSON",
                               "--obj", library, hex(offset)], check=True, capture_output=True,
                              text=True).stdout
    places = json.loads(told)[0]["Symbol"]
    named = [place["FunctionName"].split("(")[0].split("::")[-1] for place in places]
    assert {"SendDRALMsgXP", "VOKSendDralMsg"} & set(named), named
    for place in places:
        found = re.search(r"\b(src\\.*|include\\.*)$", place["FileName"])
        if found:
            lines = (tree / found[1].replace("\\", "/")).read_text().splitlines()
            assert 0 < place["Line"] <= len(lines), place
            return
    raise AssertionError(f"no place of ours: {places}")


main()
