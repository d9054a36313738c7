#!/usr/bin/env python3
"""The unpacked package tells the truth about itself: contents.py FOLDER"""

import json
import os
import pathlib
import re
import sys

PROGRAMS = ("DEMOvok.dll", "vok-companion-check.exe", "vok-doctor.exe", "vok-log.exe")


def check_bill_of_materials():
    bill = json.loads(pathlib.Path("vok.spdx.json").read_text())
    named = {entry["fileName"] for entry in bill["files"]}
    sums = pathlib.Path("SHA256SUMS").read_text().splitlines()
    summed = {"./" + line.split("  ", 1)[1] for line in sums}
    assert bill["spdxVersion"] == "SPDX-2.3", bill["spdxVersion"]
    assert named == summed - {"./vok.spdx.json"}, named ^ summed
    return next(package["versionInfo"] for package in bill["packages"] if package["name"] == "vok")


def check_links():
    for page in pathlib.Path(".").rglob("*.md"):
        for target in re.findall(r"\]\(([^)#]+)", page.read_text()):
            assert (page.parent / target).exists(), f"{page} points to {target}, which is not in the package"


def resource_text(program, name):
    """A text of the program's version resource."""
    key = (name + "\0").encode("utf-16-le")
    image = (pathlib.Path("bin") / program).read_bytes()
    assert key in image, f"{program} has no {name}"
    # The value is aligned to four bytes.
    after = image.split(key, 1)[1].decode("utf-16-le", errors="replace").lstrip("\0")
    return after.split("\0", 1)[0]


def check_versions(version):
    assert sorted(file.name for file in pathlib.Path("bin").iterdir()) == sorted(PROGRAMS)
    for program in PROGRAMS:
        for name in ("FileVersion", "ProductVersion"):
            assert resource_text(program, name) == version, f"{program}: {resource_text(program, name)}"
        assert resource_text(program, "OriginalFilename") == program
    config = pathlib.Path("lib/cmake/vok/vokConfigVersion.cmake").read_text()
    assert f'PACKAGE_VERSION "{version}"' in config
    changes = pathlib.Path("CHANGELOG.md").read_text()
    assert re.search(r"^## (\d\S*)", changes, re.MULTILINE)[1] == version, "CHANGELOG.md's latest version is another"


def main():
    version = check_bill_of_materials()
    assert re.fullmatch(r"\d+\.\d+\.\d+", version), version
    check_links()
    check_versions(version)


os.chdir(sys.argv[1])
main()
