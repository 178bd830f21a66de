#!/usr/bin/env python3
"""Puts the guide's pages into one HTML file with its pictures inside: guide-to-html.py OUT PAGE.md...

Takes the Markdown that the guide is written in: headings, paragraphs, lists, tables, code, pictures, links, emphasis.
"""
import base64
import html
import os
import re
import sys

STYLE = """body{font:16px/1.55 'Segoe UI',sans-serif;max-width:58em;margin:2em auto;padding:0 1.5em;color:#222;background:#fff}
h1{border-bottom:2px solid #c90;margin-top:2.2em}h2{margin-top:1.8em}img{max-width:100%;border-radius:4px}
code,pre{font:14px/1.45 Consolas,monospace;background:#f3f1ec;border-radius:3px}code{padding:0 .25em}
pre{padding:.7em 1em;overflow-x:auto}pre code{padding:0}table{border-collapse:collapse}
td,th{border:1px solid #ccc;padding:.3em .6em;vertical-align:top;text-align:left}td:last-child{min-width:14em}
a{color:#85500a}
@media(prefers-color-scheme:dark){body{color:#ddd;background:#1c1c1c}code,pre{background:#2b2b2b}a{color:#f0b45a}
td,th{border-color:#555}}"""


def anchor(text):
    return re.sub(r"[^\w -]", "", text.lower()).strip().replace(" ", "-")


def picture(page, path):
    with open(os.path.join(os.path.dirname(page), path), "rb") as file:
        data = base64.b64encode(file.read()).decode()
    kind = "png" if path.endswith(".png") else "jpeg"
    return f"data:image/{kind};base64,{data}"


def link(target):
    """A link to another page of the guide leads to a place in this one."""
    if re.match(r"[a-z]+:", target):
        return target
    page, _, place = target.partition("#")
    return "#" + (place or os.path.splitext(page)[0])


def inline(page, text):
    codes = []

    def keep(match):
        codes.append("<code>" + html.escape(match.group(1)) + "</code>")
        return f"\0{len(codes) - 1}\0"

    text = html.escape(re.sub(r"`([^`]+)`", keep, text), quote=False)
    text = re.sub(r"!\[([^]]*)\]\(([^)]+)\)",
                  lambda m: f'<img alt="{html.escape(m[1])}" src="{picture(page, m[2])}">', text)
    text = re.sub(r"\[([^]]+)\]\(([^)]+)\)", lambda m: f'<a href="{link(m[2])}">{m[1]}</a>', text)
    text = re.sub(r"\*\*([^*]+)\*\*", r"<strong>\1</strong>", text)
    return re.sub("\0(\\d+)\0", lambda m: codes[int(m[1])], text)


def table(page, lines):
    rows = [[cell.strip() for cell in re.split(r"(?<!\\)\|", line.strip().strip("|"))] for line in lines]
    out = ["<table>"]
    for number, row in enumerate(rows):
        if number == 1:
            continue
        tag = "td" if number else "th"
        out.append("<tr>" + "".join(f"<{tag}>{inline(page, cell.replace(chr(92) + '|', '|'))}</{tag}>" for cell in row) + "</tr>")
    return "\n".join(out + ["</table>"])


def items(page, lines):
    kind = "ol" if re.match(r"\d", lines[0]) else "ul"
    texts = []
    for line in lines:
        if re.match(r"(-|\d+\.) ", line):
            texts.append(re.sub(r"^(-|\d+\.) ", "", line))
        else:
            texts[-1] += " " + line.strip()
    return f"<{kind}>" + "\n".join(f"<li>{inline(page, text)}</li>" for text in texts) + f"</{kind}>"


def block(page, lines):
    first = lines[0]
    heading = re.match(r"(#+) (.*)", first)
    if heading:
        level = len(heading[1])
        name = os.path.splitext(os.path.basename(page))[0] if level == 1 else anchor(heading[2])
        return f'<h{level} id="{name}">{inline(page, heading[2])}</h{level}>'
    if first.startswith("|"):
        return table(page, lines)
    if all(line.startswith("    ") for line in lines):
        return "<pre><code>" + html.escape("\n".join(line[4:] for line in lines)) + "</code></pre>"
    if re.match(r"(-|\d+\.) ", first):
        return items(page, lines)
    return "<p>" + inline(page, " ".join(lines)) + "</p>"


def convert(page):
    with open(page, encoding="utf-8") as file:
        parts = re.split(r"\n\s*\n", file.read().strip("\n"))
    return "\n".join(block(page, part.split("\n")) for part in parts)


def main():
    out, pages = sys.argv[1], sys.argv[2:]
    body = "\n".join(convert(page) for page in pages)
    with open(out, "w", encoding="utf-8", newline="\n") as file:
        file.write(f'<!DOCTYPE html>\n<html lang="en">\n<meta charset="utf-8">\n<title>Brillatrix Pro Guide</title>\n'
                   f"<style>{STYLE}</style>\n{body}\n</html>\n")


main()
