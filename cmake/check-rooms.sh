#!/bin/sh
# Which room may include which, checked: check-rooms.sh FOLDER. Tells every include against the table, every circle of
# files, every folder with too many files, and every function that is declared in a header of another name than its
# source's.
set -eu
cd "$1"
find host plugin ui render web engine storage diag resources -name '*.h' -o -name '*.cpp' | sort | awk '
# A room, its sub-folders (. is the room itself) from top to bottom, then the other rooms, or single headers, that it may
# include. A sub-folder may include what stands behind it.
BEGIN {
    Room("host",      "program options batch workers sheet filter services module pictures metadata base",
                                                               "plugin/interface render resources diag/Compiler.h")
    Room("plugin",    ". parameters record interface",         "ui web render engine storage diag resources")
    Room("ui",        "dialog history settings about viewers look display view preview pixels fields paint window native",
                                                               "web render engine storage diag resources")
    Room("render",    ". stamp rows shape",                    "engine diag")
    Room("web",       ".",                                     "storage diag")
    Room("engine",    ". detect table image",                  "diag")
    Room("storage",   ".",                                     "diag")
    Room("diag",      ". module",                               "")
    Room("resources", ".",                                     "")
    kMostFiles = 24
    # Not yet split: may not grow further.
    most["engine/detect"] = 25
}
function Room(name, subs, others,    i, n, list) {
    n = split(subs, list)
    for (i = 1; i <= n; i++) level[list[i] == "." ? name : name "/" list[i]] = i
    allowed[name] = " " others " "
}
function Tell(text) { print text; failed = 1 }
function Folder(path) { sub(/\/[^\/]*$/, "", path); return path }
function Top(path) { sub(/\/.*/, "", path); return path }
function Unit(path) { sub(/\.[a-z]+$/, "", path); return path }
function Allowed(from, to) {
    if (from == to) return 1
    if (Top(from) == Top(to)) return level[from] < level[to]
    return index(allowed[Top(from)], " " Top(to) " ") || index(allowed[Top(from)], " " to " ")
}
function Include(from, to, line,    a, b) {
    a = Folder(from); b = Folder(to)
    if (!(b in level)) Tell(from ":" line ": " b "/ is no room that the table knows")
    else if (!Allowed(a, b) && !index(allowed[Top(a)], " " to " ")) Tell(from ":" line ": " a "/ may not include " to)
    if (Unit(from) != Unit(to) && !((Unit(from), Unit(to)) in edge)) {
        edge[Unit(from), Unit(to)] = 1
        uses[Unit(from)] = uses[Unit(from)] " " Unit(to)
    }
}
# A declaration or a definition that begins at the first column: which function, and where it belongs.
function Statement(path, text, line,    name, key) {
    if (text ~ /^(namespace|using|template|struct|class|enum|static|typedef|constexpr|inline|extern|#|return|})/) return
    if (!match(text, /[A-Za-z0-9_]+\(/) || text ~ /^[^(]*[=:]/) return
    name = substr(text, RSTART, RLENGTH - 1)
    if (path ~ /\.h$/ && text ~ /;$/) declaredIn[name] = declaredIn[name] " " path " "
    else if (path ~ /\.cpp$/ && text ~ /{.*$/) { key = path SUBSEP name; definedAt[key] = line }
}
function ReadFile(path,    line, text, number, hidden) {
    while ((getline line < path) > 0) {
        number++
        sub(/\r$/, "", line)
        if (line ~ /^#include "/) { split(line, part, "\""); Include(path, part[2], number) }
        sub(/ *\/\/.*/, "", line)
        if (line ~ /^namespace \{/) hidden = 1
        else if (line ~ /^\}/ && hidden && line !~ /^\};/ && text == "" && !inBody) hidden = 0
        if (line ~ /^#/ || line == "") continue
        if (line ~ /^[^ \t}]/ && !inBody) { text = ""; start = number }
        if (!inBody) text = text line
        if (!inBody && line ~ /\{$/) {
            if (!hidden) Statement(path, text, start)
            inBody = line !~ /^(namespace|extern "C" \{)/
            text = ""
        } else if (!inBody && line ~ /[;}]$/) {
            if (!hidden) Statement(path, text, start)
            text = ""
        } else if (inBody && line ~ /^\}/) inBody = 0
    }
    inBody = 0
    close(path)
}
{ files[++count] = $0; sources[Folder($0)]++; ReadFile($0) }
# Takes away what includes nothing that is left, until only circles are left.
function FindCircles(    changed, unit, n, i, list, left) {
    do {
        changed = 0
        for (unit in uses) {
            n = split(uses[unit], list); left = ""
            for (i = 1; i <= n; i++) if (list[i] in uses) left = left " " list[i]
            if (left == "") { delete uses[unit]; changed = 1 } else uses[unit] = left
        }
    } while (changed)
    for (unit in uses) { TellCircle(unit); return }
}
function TellCircle(unit,    seen, path, list) {
    while (!(unit in seen)) { seen[unit] = 1; split(uses[unit], list); unit = list[1] }
    path = unit
    do { split(uses[unit], list); unit = list[1]; path = path " -> " unit } while (index(path, unit " ") != 1)
    Tell("a circle of files: " path)
}
END {
    for (folder in sources)
        if (sources[folder] > (limit = folder in most ? most[folder] : kMostFiles))
            Tell(folder "/: " sources[folder] " source files; at most " limit)
    FindCircles()
    for (key in definedAt) {
        split(key, part, SUBSEP); header = Unit(part[1]) ".h"
        if (declaredIn[part[2]] != "" && !index(declaredIn[part[2]], " " header " "))
            Tell(part[1] ":" definedAt[key] ": " part[2] "() is declared in" declaredIn[part[2]] "and not in " header)
    }
    exit failed
}'
