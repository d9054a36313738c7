#!/usr/bin/env python3
"""A driver package's INF and its folder agree, both ways: driver_package.py FOLDER PREFIX"""

import pathlib
import re
import sys

DRIVER_FOLDER, PROCESSOR_FOLDER = "66000", "66001"


def sections(inf):
    """The lines of each section, without comments; what stands before the first one is none."""
    found, name = {}, None
    for line in inf.read_bytes().decode("ascii").split("\r\n"):
        line = line.split(";")[0].strip()
        if match := re.fullmatch(r"\[(.+)\]", line):
            name = match[1]
            assert name not in found, f"[{name}] is there twice"
            found[name] = []
        elif line:
            found[name].append(line)
    return found


def values(lines):
    return dict(re.split(r"\s*=\s*", line, maxsplit=1) for line in lines)


def listed(value):
    return [part.strip() for part in value.strip('"').split(",")]


def check_install(inf, prefix):
    """What is installed, and where; returns the files by name."""
    install = values(inf["Install"])
    destinations = values(inf["DestinationDirs"])
    copied = {file: destinations[name] for name in listed(install["CopyFiles"]) for file in inf[name]}
    processor_name, processor = listed(install["PrintProcessor"])
    assert processor_name == f"{prefix}proc", processor_name
    assert copied.pop(processor) == PROCESSOR_FOLDER
    assert set(copied.values()) == {DRIVER_FOLDER}, copied
    for role in ("DriverFile", "ConfigFile", "DataFile"):
        assert install[role] in copied, f"{role} = {install[role]} is not copied"
    assert install["DriverIsolation"] == "2" and install["DefaultDataType"] == "RAW"
    # The second makes a key without a value.
    assert inf[install["AddReg"]] == [f'HKR, PrinterDriverData, "Printer Prefix", , "{prefix}"',
                                      rf'HKLM, "SOFTWARE\{prefix}\Printer", , 0x00000010']
    return {processor, *copied}


def check_names(inf):
    """Every section that one points to is there, and every text that stands for another."""
    (maker,) = values(inf["Manufacturer"]).items()
    section, platform = listed(maker[1])
    assert platform == "NTamd64"
    (model,) = values(inf[f"{section}.{platform}"]).items()
    assert listed(model[1])[0] == "Install"
    texts = values(inf["Strings"])
    used = set(re.findall(r"%(\w+)%", "\n".join(line for lines in inf.values() for line in lines)))
    assert used == set(texts), f"texts used: {used}, texts there: {set(texts)}"
    assert all(re.fullmatch(r'"[^"]+"', text) for text in texts.values()), texts
    version = values(inf["Version"])
    assert version["Class"] == "Printer" and version["ClassGUID"] == "{4D36E979-E325-11CE-BFC1-08002BE10318}"
    assert re.fullmatch(r"\d\d/\d\d/\d{4},\d+\.\d+\.\d+\.0", version["DriverVer"]), version["DriverVer"]


def main():
    folder, prefix = pathlib.Path(sys.argv[1]), sys.argv[2]
    path = folder / f"{prefix}drv.inf"
    inf = sections(path)
    check_names(inf)
    named = check_install(inf, prefix)
    sources = set(values(inf["SourceDisksFiles.amd64"]))
    catalog = values(inf["Version"]).get("CatalogFile")
    if catalog:
        assert catalog == f"{prefix}drv.cat" and catalog not in named
        named, sources = named | {catalog}, sources | {catalog}
    there = {file.name for file in folder.iterdir()} - {path.name}
    assert named == sources, f"copied, or of the disk: {named ^ sources}"
    assert named == there, f"in the INF, or in the package: {named ^ there}"
    assert {prefix + end for end in ("vok.dll", "cfg.dll", "DRAL.EXE", "NEMB.EXE")} < there, there
    assert all((folder / name).stat().st_size > 0 for name in there)


main()
