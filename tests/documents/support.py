"""The commands for support: the log reader, and those on a machine with the demo installed."""

import json
import re
import shutil

from steps import Step

KEY = r"HKLM\SOFTWARE\DEMO\Printer"


# For what stands behind a command that goes on until Ctrl-C: presses it when a job is shown.
UNTIL_A_JOB_IS_SHOWN = (" >shown & until grep -q printed shown; do sleep 0.1; done; "
                        "kill -INT $!; wait $!; status=$?; cat shown; exit $status")


class LogReader:
    FOLDER = "build/documents/log"
    WINDOWS = False
    PROGRAMS = "build/host/tools/log"

    @staticmethod
    def prepare(place):
        shutil.copy(place.tree / "tests/log/data/message.log", place.folder / "DEMOVok.log")

    def jobs_are_told(place):
        assert len(json.loads(place.output)["jobs"]) == 2, place.output

    def page_is_there(place):
        page = (place.folder / "jobs.html").read_text()
        assert '<script id="data"' in page and "http" not in re.sub(r"http://www\.w3\.org\S*", "", page), page[:500]

    def trace_is_there(place):
        assert json.loads((place.folder / "jobs.json").read_text())["traceEvents"]

    def messages_are_the_page(place):
        page = (place.tree / "docs/troubleshooting.md").read_text()
        assert place.output.strip() and place.output.strip() in page

    STEPS = [
        Step("vok-log DEMOVok.log", shows=["^ +JOB +BEGAN ", "^ +1 .* printed$", "^2 jobs: 0 with problems"]),
        Step("vok-log --json DEMOVok.log", after=jobs_are_told),
        Step("vok-log --html -o jobs.html DEMOVok.log", after=page_is_there),
        Step("vok-log --trace -o jobs.json DEMOVok.log", after=trace_is_there),
        Step("vok-log --follow DEMOVok.log", words={"DEMOVok.log": "DEMOVok.log" + UNTIL_A_JOB_IS_SHOWN},
             shows=["^ +1 .* printed$", "^2 jobs: 0 with problems"]),
        Step("vok-log --messages", after=messages_are_the_page),
    ]


class Machine:
    FOLDER = "build/documents/machine"
    WINDOWS = True
    PROGRAMS = "build/bin"

    @staticmethod
    def prepare(place):
        place.prepare("vok-install install")
        place.prepare('vok-install install --printer "Office"')
        for folder, files in {"folder": ["DEMOvok.dll", "DEMOcfg.dll"], "build": ["DEMODRAL.EXE"]}.items():
            (place.drive / folder).mkdir()
            for file in files:
                shutil.copy(place.tree / "build/bin" / file, place.drive / folder / file)

    def logging_off(place):
        place.run("vok-doctor --log default")
        assert "note     option startLog" in place.output, place.output

    def logging_is_on(place):
        place.prepare("vok-doctor")
        assert re.search(r"^ok +option startLog +0x00000001", place.output, re.MULTILINE), place.output

    def findings_are_told(place):
        assert json.loads(place.output)["problems"] == 0, place.output

    def companions_end(place):
        # What an earlier step has started is found by the next one otherwise.
        for name in ("DEMODRAL.EXE", "DEMONEMB.EXE"):
            place.run(f"taskkill /im {name}")

    LOOKS = ["^ok +library ", "^ok +printer +Demo Printer", "^ok +printer +Office", "^problems: 0", "^no cause found: "]
    THAT_FILE = [r"^ok +library +C:\\folder\\DEMOvok.dll", "^problems: 0"]
    OFFICE = ["^ok +printer +Office", "^problems: 0"]
    STEPS = [
        Step(rf"reg add {KEY}\XFiles\Logger /v startLog /t REG_DWORD /d 1 /f", before=logging_off, after=logging_is_on),
        Step("vok-doctor --log on", before=logging_off, shows=LOOKS, after=logging_is_on),
        Step("vok-doctor", shows=LOOKS),
        Step(r"vok-doctor C:\folder\DEMOvok.dll", shows=THAT_FILE),
        Step('vok-doctor --printer "Office"', shows=OFFICE),
        Step(r'vok-doctor C:\folder\DEMOvok.dll --printer "Office"', shows=THAT_FILE + OFFICE),
        Step("vok-doctor --spooler-session 0", shows=["spooler 0", "^ok +route +pipes"]),
        Step("vok-doctor --json", after=findings_are_told),
        Step("vok-doctor --launch", shows=[r"Launching Dlar, Path = ", "DEMODRAL.EXE has its window", "DEMONEMB.EXE has its window"],
             after=companions_end),
        Step(r'reg query "HKLM\<the key in the line>"', words={r"<the key in the line>": KEY.removeprefix("HKLM\\")},
             shows=[r"^HKEY_LOCAL_MACHINE\\SOFTWARE\\DEMO\\Printer$"]),
        Step(r"vok-companion-check C:\build\DEMODRAL.EXE",
             shows=["^pass +window-title", "^pass +pipe-job"]),
    ]
