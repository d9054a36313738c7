"""Which of the documents' commands is run where, and what its page says will happen.

A scenario is a list of steps, run one after another on a machine of its own."""

import source_tree
import support
import sdk

SCENARIOS = {
    "source_tree": source_tree,
    "log_reader": support.LogReader,
    "machine": support.Machine,
    "sdk": sdk.Package,
    "installer": sdk.Installer,
    "windows_tests": sdk.WindowsTests,
}

# What another test runs already: the name of that test.
ELSEWHERE = {
    "run.cmd": "run_cmd.whole",
    "run.cmd remove": "run_cmd.interrupted",
    "cmake --preset product && cmake --build --preset product --target package": "package.has_the_same_bytes_from_another_folder",
    "cmake --preset product && cmake --build --preset product": "package.has_the_same_bytes_from_another_folder",
}

# What can't be run by a test, and why.
BY_HAND = {
    r'wine reg add "HKCU\Software\Wine\Drivers" /v Graphics /d null': "what use_prefix of tools/common.sh does for every test",
    "./test": "runs this test",
    "./test --quick": "builds in the folders of the run that this test is a part of",
    "./test --long": "runs this test, for hours",
    "./test --hardened": "runs the same tests on another build",
    "./test --coverage": "runs the same tests on another build",
    "./test --gcc": "runs the same tests on another build",
    ".ci/run": "runs this test",
    "tools/check": "is a part of .ci/run, beside ./test",
    "tools/on-debian 13 ./test": "runs the same tests on another system, which takes a network",
    "tools/mutate": "runs the tests by the hundred, for hours",
    "./bench": "measures for minutes, which needs the machine for itself",
}
