"""The commands at the top of the source tree."""

import re

from steps import Step

FOLDER = "."
WINDOWS = False


def two_pages(place):
    (place.tree / "build/own document.txt").write_bytes(b"one\f two\f")


def list_tests(place):
    """The tests of ./test, in a folder where the run that is under way doesn't write its log."""
    folder = place.tree / "build/documents/tests"
    folder.mkdir(parents=True, exist_ok=True)
    builds = [place.tree / "build" / build for build in ("tests", "host")]
    (folder / "CTestTestfile.cmake").write_text("".join(f'subdirs("{build}")\n' for build in builds))


def selects(pattern, command="./test"):
    """COMMAND -R PATTERN: this test is run by ./test, so ctest is only asked which tests they are."""
    return Step(
        f"{command} -R {pattern}",
        before=list_tests,
        words={command: "ctest --test-dir build/documents/tests -N"},
        shows=[rf"Test +#\d+: .*{re.escape(pattern)}", r"^Total Tests: [1-9]"],
    )


STEPS = [
    Step("./run", shows=["^== job 1: ", "^== job 2: ", "equal to the document", "job 2 printed$",
                         "^== DRAL was started by this job",
                         "^== NEMB was found running", "^== the library's log: ", "^== all of it held"]),
    Step("./run FILE", words={"FILE": "'build/own document.txt'"}, before=two_pages,
         shows=[r"own document.txt \(9 bytes\)", "equal to the document", "^== all of it held"]),
    Step("./run --route pipe", shows=["pipe route", "is reached by pipe", "^== all of it held"]),
    Step("./run --windows win98", shows=["on win98", "vok-drive stands in", "^== all of it held"]),
    Step("./run --reply dral=0", shows=["the job was refused: nothing reached the port", "^== all of it held"]),
    Step("./run --help", shows=["^./run .FILE.", "^Exit status: 0"]),
    selects("Mutex"),
    *[selects(name) for name in ("contract", "FaultSweep", "AllocationSweep", "FirstException", "ManyJobs",
                                 "LoggerCount", "Soak", "Fuzz", "LogOrder", "ClosePipe", "LogSetUp", "CriticalLog", "ModelPrefix",
                                 "SecurityEveryone", "LiveJobs", "LiveLog", "LiveHostile", "LiveReplies", "LogWriter")],
    selects("Fuzz.NewSeeds", "VOK_FUZZ_SECONDS=3600 ./test"),
    *[selects(name, "./test --long") for name in ("Soak", "LiveJobs", "LiveLog", "LiveSoak")],
    Step("cmake --preset host && cmake --build --preset host", after=lambda place: place.prepare("build/host/tools/log/vok-log --help")),
]
