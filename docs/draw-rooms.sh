#!/bin/sh
# Draws docs/rooms.svg: the rooms with their sub-folders, and who includes whom, as the sources stand now.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
find host plugin ui render web engine storage diag resources \( -name '*.h' -o -name '*.cpp' \) | sort | awk '
# Where the rooms stand: column and row, from the top.
BEGIN {
    Place("host", 1, 0); Place("plugin", 1, 1); Place("ui", 1, 2); Place("render", 0, 3); Place("web", 2, 3)
    Place("engine", 0, 4); Place("storage", 2, 4); Place("diag", 0, 5); Place("resources", 2, 5)
    kWidth = 300; kStep = 130; kHeight = 74; kRow = 128; kLeft = 20; kTop = 20
}
function Place(room, column, row) { order[++rooms] = room; column_[room] = column; row_[room] = row }
function X(room) { return kLeft + column_[room] * (kWidth + kStep) / 2 * 1.0 }
function Y(room) { return kTop + row_[room] * kRow }
function Top(path) { sub(/\/.*/, "", path); return path }
function Sub(path,    n, part) { n = split(path, part, "/"); return n > 2 ? part[2] : "" }
{
    room = Top($0); sub_ = Sub($0); files[room]++
    if (sub_ != "" && !((room, sub_) in seen)) { seen[room, sub_] = 1; subs[room] = subs[room] " " sub_ }
    while ((getline line < $0) > 0) {
        if (line !~ /^ *(\/\/.*)?$/) lines[room]++
        if (line ~ /^#include "/) { split(line, part, "\""); to = Top(part[2]); if (to != room) uses[room, to]++ }
    }
    close($0)
}
function Wrapped(text, x, y,    n, list, i, line) {
    n = split(text, list, " "); line = ""
    for (i = 1; i <= n; i++) {
        if (length(line " " list[i]) > 46) {
            printf "<text x=\"%d\" y=\"%d\" class=\"s\">%s</text>\n", x, y, line; y += 15; line = ""
        }
        line = line == "" ? list[i] : line "  " list[i]
    }
    if (line != "") printf "<text x=\"%d\" y=\"%d\" class=\"s\">%s</text>\n", x, y, line
}
function Arrow(from, to, count,    x1, y1, x2, y2) {
    x1 = X(from) + kWidth / 2 + (column_[to] - column_[from]) * 40; y1 = Y(from) + kHeight
    x2 = X(to) + kWidth / 2 + (column_[from] - column_[to]) * 40 + (row_[to] - row_[from] - 1) * 14; y2 = Y(to) - 3
    printf "<path d=\"M%d %d C%d %d %d %d %d %d\" stroke-width=\"%.1f\"/>\n", x1, y1, x1, y1 + 40, x2, y2 - 40, x2, y2,
        0.8 + (count > 60 ? 3 : count / 20)
}
END {
    print "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"770\" height=\"770\" viewBox=\"0 0 770 770\">"
    print "<defs><marker id=\"a\" viewBox=\"0 0 8 8\" refX=\"7\" refY=\"4\" markerWidth=\"9\" markerHeight=\"9\" " \
        "markerUnits=\"userSpaceOnUse\" orient=\"auto\"><path d=\"M0 0L8 4L0 8z\" fill=\"#5b6b7b\" stroke=\"none\"/></marker></defs>"
    print "<style>text{font-family:sans-serif;fill:#1d2733}.t{font-size:17px;font-weight:bold}.n{font-size:12px;fill:#5b6b7b}" \
        ".s{font-size:12px}</style><rect width=\"770\" height=\"770\" fill=\"#fff\"/>"
    print "<g fill=\"none\" stroke=\"#5b6b7b\" marker-end=\"url(#a)\" opacity=\"0.75\">"
    for (i = 1; i <= rooms; i++)
        for (j = 1; j <= rooms; j++)
            # Every room reports: arrows to diag/ would only hide the others.
            if (order[j] != "diag" && (order[i], order[j]) in uses) Arrow(order[i], order[j], uses[order[i], order[j]])
    print "</g>"
    for (i = 1; i <= rooms; i++) {
        room = order[i]
        printf "<rect x=\"%d\" y=\"%d\" width=\"%d\" height=\"%d\" rx=\"7\" fill=\"#eef3f8\" stroke=\"#5b6b7b\"/>\n", X(room), Y(room), kWidth, kHeight
        printf "<text x=\"%d\" y=\"%d\" class=\"t\">%s/</text>\n", X(room) + 12, Y(room) + 23, room
        printf "<text x=\"%d\" y=\"%d\" class=\"n\" text-anchor=\"end\">%d files, %d lines</text>\n", X(room) + kWidth - 12, Y(room) + 22, files[room], lines[room]
        Wrapped(subs[room], X(room) + 12, Y(room) + 44)
    }
    print "</svg>"
}' >docs/rooms.svg
