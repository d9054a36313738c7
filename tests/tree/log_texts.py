"""The texts that the library can write to its log, as its sources spell them."""

import re

FOLDERS = ("interface", "launch", "logging", "messaging", "support")

# Texts of the sources that never reach the log: names of registry keys and windows, exceptions.
NOT_LOGGED = re.compile(
    r"^(SYSTEM\\|System\\|\\PrinterDriverData|Mutex::|InterProcessLock |SecurityEveryone::|Security::"
    r"|OsVersion::|RegistryKey64::|CriticalLog\(\)|BasicLogger::|Error getting message:|int \$| : incorrect)"
)


def sources(tree):
    return [path for folder in FOLDERS for path in sorted((tree / "src" / folder).glob("*.cpp"))]


def literals(text):
    """The plain string literals of a C++ source, neighbours joined, escaped backslashes undone."""
    text = re.sub(r"^\s*(//|#include).*$", "", text, flags=re.MULTILINE)
    text = re.sub(r'"\s*\n\s*"', "", text)
    for literal in re.findall(r'"((?:[^"\\\n]|\\.)*)"', text):
        yield literal.replace("\\\\", "\\")


def is_log_text(literal):
    return " " in literal.strip() and re.search("[A-Za-z]{2}", literal) and not NOT_LOGGED.match(literal)


def log_texts(tree):
    return {text for path in sources(tree) for text in literals(path.read_text()) if is_log_text(text)}


def whole_lines(tree):
    """Those that are a line of the log by themselves, one-word lines among them."""
    return {
        literal.replace("\\\\", "\\")
        for path in sources(tree)
        for literal in re.findall(r'\blogLine\(\s*"((?:[^"\\\n]|\\.)*)"\s*\)', path.read_text())
    }
