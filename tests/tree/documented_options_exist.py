"""The options that the documents give to the programs are options of those programs.

Usage: documented_options_exist.py TREE
"""
import pathlib
import re
import sys

# Where a program's options stand.
PROGRAMS = {
    "./run": ["tools/run/options.sh"],
    "./test": ["test"],
    "vok-doctor": ["tools/doctor/main.cpp"],
    "vok-companion-check": ["tools/companion_check/main.cpp"],
    "vok-log": ["tools/log/options.cpp"],
    "vok-install": ["samples/install/main.cpp", "samples/common/options.cpp"],
    "vok-print": ["samples/print/main.cpp", "samples/common/options.cpp"],
    "vok-drive": ["samples/drive/main.cpp", "samples/common/options.cpp"],
}
COMMAND = re.compile(r"(?<![\w/.-])(" + "|".join(map(re.escape, PROGRAMS)) + r")((?: [^\s`|#]+)*)")


def unknown_options(tree, document, text):
    for program, words in COMMAND.findall(text):
        sources = [(tree / name).read_text(encoding="utf-8") for name in PROGRAMS[program]]
        for option in re.findall(r" (--[a-z][a-z-]*)", words):
            if not any(re.search(re.escape(option) + r"(?![\w-])", source) for source in sources):
                yield f"{document}: {program} has no option {option}"


def main():
    tree = pathlib.Path(sys.argv[1])
    documents = sorted([*tree.glob("*.md"), *tree.glob("docs/*.md")])
    problems, commands = [], 0
    for document in documents:
        text = document.read_text(encoding="utf-8")
        problems += unknown_options(tree, document, text)
        commands += len(COMMAND.findall(text))
    for problem in problems:
        print(problem)
    print(f"{len(documents)} documents, {commands} mentions of programs")
    return 1 if problems or not documents or not commands else 0


sys.exit(main())
