"""The commands for those who unpack the SDK, and for a real Windows machine."""

import shutil

from steps import Step

ARCHIVE = "vok-1.0.0-windows-x64.zip"
UNPACKED = ARCHIVE.removesuffix(".zip")


class Package:
    """From the zip alone, in the order of its README; the first two commands are docs/print-processor.md's."""

    FOLDER = "build/documents/sdk"
    WINDOWS = False

    @staticmethod
    def prepare(place):
        shutil.copy(place.tree / "build/product/package" / ARCHIVE, place.folder)

    def go_inside(place):
        place.folder = place.folder / UNPACKED

    def go_to_windows(place):
        place.windows, place.folder = True, place.folder / "build/bin"

    def make_certificate(place):
        place.prepare("openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=throw-away"
                      " -addext extendedKeyUsage=codeSigning -keyout key.pem -out certificate.pem")

    def package_is_signed(place):
        for file in ("DEMOvok.dll", "DEMOproc.dll", "DEMODRAL.EXE", "DEMOdrv.cat"):
            place.prepare(f"osslsigncode verify -CAfile certificate.pem -in build/driver/{file}")

    def document_was_printed(place):
        printed = place.drive / "demo/port.prn"
        assert printed.read_bytes() == (place.tree / "samples/document.txt").read_bytes()

    STEPS = [
        Step(f"unzip {ARCHIVE}", shows=["README.md"]),
        Step(f"cd {UNPACKED}", after=go_inside),
        Step("sha256sum --check --quiet SHA256SUMS"),
        Step("cmake -S samples -B build -G Ninja -DCMAKE_TOOLCHAIN_FILE=$PWD/cmake/mingw-win32.cmake"
             " -Dvok_DIR=$PWD/lib/cmake/vok", shows=["Build files have been written"]),
        Step("cmake --build build", shows=["DEMODRAL.EXE"]),
        Step("cp bin/* build/bin"),
        Step("cmake build -DVOK_CERTIFICATE=certificate.pem -DVOK_CERTIFICATE_KEY=key.pem", before=make_certificate),
        Step("cmake --build build --target vok_driver_package", after=package_is_signed),
        Step(r"mkdir C:\demo", before=go_to_windows),
        Step(r"vok-install install --port C:\demo\port.prn", shows=["^printer +Demo Printer"]),
        Step("vok-doctor --log on", shows=["^problems: 0"]),
        Step(r'vok-print ..\..\samples\document.txt --printer "Demo Printer" --compare C:\demo\port.prn',
             shows=[r"^C:\\demo\\port\.prn has [0-9]+ bytes, equal to the document$"], after=document_was_printed),
        Step(r"vok-log C:\DEMOVok.log", shows=["^ +1 .*Demo Printer.* printed$", "^1 jobs?: 0 with problems"]),
        Step("vok-companion-check DEMODRAL.EXE", shows=["^pass +window-title", "^pass +pipe-job"]),
        Step("vok-install remove", shows=[r"^port off +C:\\demo\\port\.prn$"]),
    ]


class Installer:
    FOLDER = "build/documents/installer"
    WINDOWS = True
    PROGRAMS = "build/bin"

    STEPS = [
        Step('vok-install install --printer "Demo Printer" --port LPT1:', shows=["^port +LPT1:", "^printer +Demo Printer"]),
        Step("vok-install check"),
        Step("vok-install status", shows=["^printer +Demo Printer +installed"]),
        Step("vok-install remove", shows=["^port left +LPT1:$"]),
    ]


class WindowsTests:
    FOLDER = "."
    WINDOWS = False

    def unpack(place):
        """All of it, but the runner is given two test programs: the others are run by ctest."""
        work = place.tree / "build/documents/windows_tests"
        shutil.unpack_archive(place.tree / "build/vok-tests-windows-x64.zip", work)
        place.folder, place.windows = work / "vok-tests-windows-x64", True
        programs = {file.name for file in (place.folder / "tests").iterdir()}
        assert len(programs) >= 15, programs
        for name in programs - {"sim_test.exe", "support_test.exe"}:
            (place.folder / "tests" / name).unlink()

    def every_test_was_run(place):
        told, tests = place.output.splitlines()[-1], 0
        for program in ("sim_test", "support_test"):
            place.prepare(rf"tests\{program}.exe --gtest_list_tests")
            tests += sum(line.startswith("  ") for line in place.output.splitlines())
        assert told == f"{tests} passed, 0 failed", f"{told} of {tests}"

    STEPS = [
        Step("tools/pack-windows-tests", shows=["vok-tests-windows-x64.zip: [0-9]+ test programs"]),
        Step("run-tests.exe", before=unpack, after=every_test_was_run),
    ]
