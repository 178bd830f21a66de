#!/usr/bin/env python3
"""Lists what the program can tell its user, out of the sources, piece by piece: list-messages.py
list-messages.py --check PAGE: tells what the page of messages lacks, with status 1.

A message is put together from pieces in quotes; a piece is listed when it has two words. Values in it are written as
"..." on the page.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
CALLS = re.compile(r"\b(Fail\w*|Refuse|say|PrintProblem|kUserMessage|drop|Note)\(|kUserMessage|dropped\.push_back|reason =|\.refusal =")
# Files of texts that stand in tables or behind names.
TABLES = ["host/program/ResultText.cpp", "host/pictures/PictureKind.cpp", "plugin/parameters/ScriptReader.cpp",
          "plugin/record/HostImage.cpp", "storage/ParameterFiles.cpp", "storage/ParameterSetFiles.cpp",
          "host/metadata/ExifTree.cpp", "ui/settings/ParameterFileCommands.cpp"]
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


def messages():
    found = {}
    for room in ("host", "plugin", "ui", "storage", "web"):
        for path in sorted((ROOT / room).rglob("*.cpp")):
            name = path.relative_to(ROOT).as_posix()
            if name.startswith("host/services") or name in ("host/options/HelpText.cpp", "web/UpdateRequest.cpp"):
                continue
            for statement in statements(path.read_text(encoding="utf-8")):
                if re.search("kDebugMessage|ReportDebug|kSystemError", statement) or not (name in TABLES or CALLS.search(statement)):
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
