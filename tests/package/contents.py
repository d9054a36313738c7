#!/usr/bin/env python3
"""The unpacked package tells the truth about itself: contents.py FOLDER"""

import hashlib
import json
import os
import pathlib
import re
import subprocess
import sys
import urllib.parse

PROGRAMS = ("DEMOvok.dll", "vok-companion-check.exe", "vok-doctor.exe", "vok-log.exe")


def check_bill_of_materials():
    bill = json.loads(pathlib.Path("vok.spdx.json").read_text())
    named = {entry["fileName"] for entry in bill["files"]}
    sums = pathlib.Path("SHA256SUMS").read_text().splitlines()
    summed = {"./" + line.split("  ", 1)[1] for line in sums}
    assert bill["spdxVersion"] == "SPDX-2.3", bill["spdxVersion"]
    assert named == summed - {"./vok.spdx.json"}, named ^ summed
    ours, = (package for package in bill["packages"] if package["name"] == "vok")
    contained = {r["relatedSpdxElement"] for r in bill["relationships"]
                 if r["spdxElementId"] == ours["SPDXID"] and r["relationshipType"] == "CONTAINS"}
    assert contained == {entry["SPDXID"] for entry in bill["files"]}, "files that belong to nothing"
    hashes = sorted(hashlib.sha1(pathlib.Path(name).read_bytes()).hexdigest() for name in named)
    code = ours["packageVerificationCode"]["packageVerificationCodeValue"]
    assert code == hashlib.sha1("".join(hashes).encode()).hexdigest(), "the files are others"
    return ours["versionInfo"]


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
        for name in ("CompanyName", "LegalCopyright"):
            assert resource_text(program, name) == "vok", f"{program}: {resource_text(program, name)}"
    config = pathlib.Path("lib/cmake/vok/vokConfigVersion.cmake").read_text()
    assert f'PACKAGE_VERSION "{version}"' in config
    changes = pathlib.Path("CHANGELOG.md").read_text()
    assert re.search(r"^## (\d\S*)", changes, re.MULTILINE)[1] == version, "CHANGELOG.md's latest version is another"


def of_debian(*words):
    return subprocess.run(["dpkg-query", *words], check=True, capture_output=True, text=True).stdout.strip()


def linked_packages():
    """Of the archives that the linker took something from, by the symbols that it has written."""
    archives = set()
    for symbols in pathlib.Path("symbols").iterdir():
        modules = subprocess.run(["llvm-pdbutil-19", "dump", "--modules", symbols], check=True,
                                 capture_output=True, text=True).stdout
        archives.update(re.findall(r"Obj: `(/\S+\.a)`", modules))
    files = {os.path.realpath(archive) for archive in archives}
    assert len(files) >= 5, files
    return {of_debian("--search", file).split(":")[0] for file in files}


def sources(packages):
    """Several packages may be made from one source, which has one licence."""
    return {of_debian("--show", "--showformat=${source:Package}", package) for package in packages}


def check_notices():
    """Everything that is built in is in the bill, in the version that is installed, and its licence is there."""
    bill = json.loads(pathlib.Path("vok.spdx.json").read_text())
    notices = pathlib.Path("THIRD-PARTY-NOTICES").read_text(encoding="utf-8")
    relations = {r["relatedSpdxElement"]: r["relationshipType"] for r in bill["relationships"]}
    tools = {relation["spdxElementId"] for relation in bill["relationships"]
             if relation["relationshipType"] == "BUILD_TOOL_OF"}
    assert tools == {"SPDXRef-Package-compiler", "SPDXRef-Package-linker"}, tools
    built_in = set()
    for part in bill["packages"][1:]:
        locator = urllib.parse.unquote(part["externalRefs"][0]["referenceLocator"])
        package, version = re.fullmatch(r"pkg:deb/debian/(.*)@(.*)", locator).groups()
        assert part["versionInfo"] == version == of_debian("--show", "--showformat=${Version}", package)
        if relations.get(part["SPDXID"]) == "STATIC_LINK":
            built_in.add(package)
            assert pathlib.Path(f"/usr/share/doc/{package}/copyright").read_text(encoding="utf-8") in notices, package
            assert f"from the package {package} {part['versionInfo']}\n" in notices
    assert {"libfmt-dev", "libcli11-dev", "nlohmann-json3-dev", "libz-mingw-w64-dev"} < built_in, built_in
    unnamed = sources(linked_packages()) - sources(built_in)
    assert not unnamed, f"{unnamed} is linked into the programs and not in the bill"
    for pointed_to in set(re.findall(r"/usr/share/common-licenses/[A-Za-z0-9.+-]*[A-Za-z0-9+]", notices)):
        assert pathlib.Path(pointed_to).read_text(encoding="utf-8") in notices, pointed_to


def main():
    version = check_bill_of_materials()
    check_notices()
    assert re.fullmatch(r"\d+\.\d+\.\d+", version), version
    check_links()
    check_versions(version)


os.chdir(sys.argv[1])
main()
