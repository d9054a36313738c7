"""The commands that the documents tell their readers to run."""

import re

# What a block of code may be; the first two are commands, one a line.
COMMANDS = {"sh", "bat"}
LANGUAGES = COMMANDS | {"text", "cpp"}

# A span of code within a text is a command when it begins with one of these. Without arguments a
# program's name is a mention of it, unless its path is there.
PROGRAM = re.compile(
    r"(?:[A-Z_]+=\S+ )*"
    r"(?:(?:\./|tools/|\.ci/|bin/|build/)\S+(?: .*)?"
    r"|(?:vok-[a-z-]+|run-tests|run\.cmd|reg|cmake|cpack|ctest|ninja|git|unzip|sc|net|copy|dir|del|start|wine)(?:\.exe)? \S.*)$"
)
# Folders and files, which are not run.
FILE = re.compile(r"\S*/$|\S+\.(?:dll|a|lib|debug|log|txt|zip|json|html|cpp|h|md|cmake)$|build/\S*/vok-log$")


def pages(tree):
    return sorted([*tree.glob("*.md"), *tree.glob("docs/*.md"), tree / "cmake/package_readme.md"])


class Malformed(Exception):
    pass


def blocks(text):
    """(first line, language, lines) of each block of code."""
    lines = text.split("\n")
    inside, language, start = False, "", 0
    for number, line in enumerate(lines, 1):
        if line.startswith("```"):
            if inside:
                yield start, language, lines[start : number - 1]
            inside, language, start = not inside, line[3:].strip(), number
        elif not inside and line.startswith("    ") and number > 1 and lines[number - 2] == "":
            raise Malformed(f"line {number}: a block of code without fence and language")


def without_comment(line):
    return re.sub(r"\s+#\s.*$", "", line).rstrip()


def in_blocks(text):
    for start, language, lines in blocks(text):
        if language not in LANGUAGES:
            raise Malformed(f"line {start}: a block of code is one of {sorted(LANGUAGES)}, not '{language}'")
        if language in COMMANDS:
            joined = re.sub(r"\\\n\s*", "", "\n".join(lines))
            yield from (without_comment(line) for line in joined.split("\n") if without_comment(line))


def in_text(text):
    prose = re.sub(r"^```.*?^```", "", text, flags=re.DOTALL | re.MULTILINE)
    for span in re.findall(r"`([^`\n]+)`", prose):
        if PROGRAM.match(span) and not FILE.match(span):
            yield span
    # Tables of commands: there a name alone is one, too.
    for table in re.findall(r"^\| command \|.*\n\|[-| ]+\n((?:\|.*\n)+)", prose, flags=re.MULTILINE):
        for first in re.findall(r"^\| `([^`]+)`", table, flags=re.MULTILINE):
            yield first


def commands(tree):
    """Every command with the pages that have it."""
    found = {}
    for page in pages(tree):
        text = page.read_text(encoding="utf-8")
        try:
            for command in [*in_blocks(text), *in_text(text)]:
                found.setdefault(command, set()).add(page.relative_to(tree).as_posix())
        except Malformed as fault:
            raise Malformed(f"{page.name}, {fault}") from None
    return found
