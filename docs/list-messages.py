#!/usr/bin/env python3
"""Lists what the program can tell its user, out of the sources, piece by piece: list-messages.py
list-messages.py --check PAGE: tells what the page of messages lacks, with status 1.

A message is put together from pieces in quotes; a piece is listed when it has two words. Values in it are written as
"..." on the page. Of the command line every text counts that is not known to be something else; of the dialog, what is
told to the user and not only to the log; of the installer and of the Linux starter, what they show.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
CALLS = re.compile(r"\b(Fail\w*|Refuse|say|PrintProblem|kUserMessage|drop|Note)\(|kUserMessage|dropped\.push_back|reason =|\.refusal =")
# Files of texts that stand in tables or behind names.
TABLES = ["plugin/parameters/ScriptReader.cpp",
          "plugin/record/HostImage.cpp", "storage/ParameterFiles.cpp", "storage/ParameterSetFiles.cpp",
          "ui/settings/ParameterFileCommands.cpp"]
# Texts of the command line that are no messages: what goes into files, names of things, what is looked for, questions to
# another filter and its faults, which stand after "the plug-in misbehaved", and what goes wrong in a test alone.
NOT_TOLD_FILES = ["host/options/HelpText.cpp", "host/program/LightFiles.cpp", "host/options/ParameterOptions.cpp",
                  "host/metadata/PngChunks.cpp", "host/metadata/PngGamma.cpp", "host/base/UnixFile.cpp",
                  "host/base/CommandLine.cpp", "host/sheet/SheetText.cpp", "web/UpdateRequest.cpp"]
NOT_TOLD = re.compile(r"AddViolation|ReportLeaks|logic_error|invalid_argument|snprintf\(code|starts_with\(|journal 1|dialogName =")
SHOWN = re.compile(r'MessageBox [A-Z_|]+ "((?:\$\\"|[^"])*)"')
ECHOED = re.compile(r'echo "([^"]*)" >&2')
LITERAL = re.compile(r'"((?:[^"\\]|\\.)*)"')


def statements(text):
    text = re.sub(r'^\s*#.*$', "", text, flags=re.M)
    text = re.sub(r'(?<!["\w:])//[^\n]*', "", text)
    text = re.sub(r'find\("[^"]*"\)', "", text)  # what is looked for in somebody else's text
    text = re.sub(r'"\s*\n\s*"', "", text)
    return re.findall(r'(?:"(?:[^"\\]|\\.)*"|[^;{}"])+', text)


def pieces(literal):
    text = literal.replace(r"\"", '"').replace(r"\\", "\\").replace(r"\r", "").replace(r"\n", "\n").replace(r"\t", " ")
    for piece in re.split(r"'?%[-.*0-9]*[lh]*[a-zA-Z]'?|\n|\\\\[x0]|\.\.\.", text):
        piece = re.sub(r"\s+", " ", piece).strip(" :;,.()'\"=[]/")
        if " " in piece and "\\0" not in piece and len(re.findall(r"[A-Za-z]{2,}", piece)) >= 2:
            yield piece


def scripts():
    """Texts of the installer and of the starter, with their variables as values."""
    for name, shown in (("cmake/package/installer.nsi", SHOWN), ("brillatrix", ECHOED)):
        for text in shown.findall((ROOT / name).read_text(encoding="utf-8")):
            text = re.sub(r"\$\\r|\$\\n", "\n", text).replace('$\\"', '"')
            for piece in pieces(re.sub(r"\$\{?\w+\}?", "...", text).replace("\n", "\\n")):
                yield name, piece


def messages():
    found = {piece: name for name, piece in scripts()}
    for room in ("host", "plugin", "ui", "storage", "web"):
        for path in sorted((ROOT / room).rglob("*.cpp")):
            name = path.relative_to(ROOT).as_posix()
            if name.startswith("host/services") or name in NOT_TOLD_FILES:
                continue
            for statement in statements(path.read_text(encoding="utf-8")):
                if re.search("kDebugMessage|ReportDebug|kSystemError", statement) or NOT_TOLD.search(statement):
                    continue
                if not (room == "host" or name in TABLES or CALLS.search(statement)):
                    continue
                for literal in LITERAL.findall(statement):
                    for piece in pieces(literal):
                        found.setdefault(piece, name)
    return found


def main():
    found = messages()
    if len(sys.argv) < 3:
        print("\n".join(f"{name}: {piece}" for piece, name in found.items()))
        return 0
    page = re.sub(r"\s+", " ", pathlib.Path(sys.argv[2]).read_text(encoding="utf-8").replace("\\|", "|").replace("`", ""))
    missing = [f"{name}: {piece}" for piece, name in found.items() if piece not in page]
    print("\n".join(missing) or f"all {len(found)} pieces of messages are there")
    return 1 if missing or len(found) < 100 else 0


sys.exit(main())
