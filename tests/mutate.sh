#!/bin/sh
# Plants small faults in a room's files, one at a time, and counts those that its tests catch:
#   tests/mutate.sh ROOM [COUNT [SEED]]       20 faults with seed 1 unless told; ROOM also a folder or file: ui/view
# Works on a copy of the checkout in build/mutate. A fault is caught when a test fails or takes more than ten times as
# long as before. Those not caught are printed. MUTATE_TESTS="engine_tests" runs other programs than the room's;
# MUTATE_ALL=1 runs on to tell every case that catches it.
command -v python3 >/dev/null || { echo "mutate.sh: needs python3" >&2; exit 2; }
exec python3 - "$(cd "$(dirname "$0")/.." && pwd)" "$@" <<'PYTHON'
import filecmp, hashlib, os, re, shutil, subprocess, sys, time

root, room = sys.argv[1], sys.argv[2].rstrip('/') if len(sys.argv) > 2 else sys.exit('which room?')
count, seed = int(sys.argv[3]) if len(sys.argv) > 3 else 20, sys.argv[4] if len(sys.argv) > 4 else '1'
TESTS = {  # of a folder or room; the longest name that fits counts
    'engine': 'engine_tests reference_tests', 'engine/InitializationTask.cpp': 'init_task_tests',
    'render': 'render_tests reference_tests', 'diag': 'diag_tests', 'storage': 'storage_tests ui_tests',
    'web': 'update_tests', 'host': 'host_tests', 'plugin': 'plugin_tests diagnostic_tests',
    'ui': 'dialog_tests', 'ui/fields': 'ui_tests dialog_tests', 'ui/settings': 'ui_tests dialog_tests',
    'ui/look': 'look_tests dialog_tests', 'ui/about': 'look_tests dialog_tests',
    'ui/display': 'view_tests dialog_tests', 'ui/view': 'view_tests dialog_tests',
    'ui/preview': 'preview_tests dialog_tests', 'ui/pixels': 'preview_tests view_tests',
    'ui/viewers': 'viewer_tests debug_picture_tests diagnostic_tests'}
PORTABLE = ('engine_tests', 'reference_tests', 'render_tests')
SWAPS = [(' < ', ' <= '), (' <= ', ' < '), (' > ', ' >= '), (' >= ', ' > '), (' == ', ' != '), (' != ', ' == '),
         (' + ', ' - '), (' - ', ' + '), (' * ', ' / '), (' / ', ' * '), (' && ', ' || '), (' || ', ' && '),
         (' & ', ' | '), (' | ', ' & '), (' << ', ' >> '), (' >> ', ' << '), ('true', 'false'), ('false', 'true'),
         ('std::min', 'std::max'), ('std::max', 'std::min'), (' += ', ' -= '), ('++', '--'), ('left', 'right'),
         ('top', 'bottom'), ('width', 'height')]


def faults_of(path):
    """All (column, old, new) a line, of lines of code."""
    for number, line in enumerate(open(f'{root}/{path}').read().split('\n')):
        code = re.sub(r'"(\\.|[^"])*"', lambda text: '"' * len(text.group()), line.split('//')[0])
        if not code.startswith(' ') or re.match(r'\s*(static_assert|using|constexpr|public|private)', code):
            continue
        for old, new in SWAPS:
            for hit in re.finditer(re.escape(old) if old[0] == ' ' else rf'(?<!\w){re.escape(old)}(?!\w)', code):
                yield number, hit.start(), old, new
        for hit in re.finditer(r'(?<![\w.])\d+(?![\w.])', code):
            yield number, hit.start(), hit.group(), str(int(hit.group()) + 1)
        if hit := re.match(r'(\s*)(else )?if \((?!const|auto)(.*)\)( \{)?$', code):
            start, condition = hit.start(3), line[hit.start(3):hit.end(3)]
            yield number, start, condition, f'!({condition})'
        if hit := re.match(r'\s+([A-Za-z_:>.-]+\(.*\);)$', code):
            yield number, hit.start(1), line[hit.start(1):hit.end(1)], ';'


def choose():
    """COUNT faults; which ones hangs on the text of their lines, not on what stands around them."""
    files = subprocess.run(['git', '-C', root, 'ls-files', room], capture_output=True, text=True).stdout.split()
    found = []
    for path in (f for f in files if f.endswith(('.cpp', '.h'))):
        lines = open(f'{root}/{path}').read().split('\n')
        for number, column, old, new in faults_of(path):
            key = f'{seed} {os.path.basename(path)} {lines[number].strip()} {column} {new}'
            found.append((hashlib.sha1(key.encode()).hexdigest(), path, number, column, old, new))
    return sorted(found)


scratch = f'{root}/build/mutate'
for name in subprocess.run(['git', '-C', root, 'ls-files'], capture_output=True, text=True).stdout.split('\n'):
    if os.path.isfile(f'{root}/{name}'):
        os.makedirs(os.path.dirname(f'{scratch}/{name}'), exist_ok=True)
        if not os.path.exists(f'{scratch}/{name}') or not filecmp.cmp(f'{root}/{name}', f'{scratch}/{name}', False):
            shutil.copy(f'{root}/{name}', f'{scratch}/{name}')
wanted = os.environ.get('MUTATE_TESTS') or TESTS[max((k for k in TESTS if room.startswith(k)), key=len)]
wanted = wanted.split()
preset = 'native-release' if all(t in PORTABLE for t in wanted) else 'windows-x64'
os.environ.setdefault('BRILLATRIX_WINEPREFIX', f'{root}/build/wine')
if not os.path.exists(f'{scratch}/build/{preset}/build.ninja'):
    subprocess.run(['cmake', '--preset', preset], cwd=scratch, check=True, stdout=subprocess.DEVNULL)


def build():
    return subprocess.run(['ninja', '-j2', '-C', f'build/{preset}'] + wanted, cwd=scratch,
                          capture_output=True).returncode == 0


def runs(test, limit):
    program = f'build/{preset}/bin/{test}'
    command = ['sh', 'cmake/wine-run.sh', program + '.exe'] if preset == 'windows-x64' else [program]
    if 'MUTATE_ALL' not in os.environ:
        command.append('--gtest_fail_fast')
    try:
        with open(f'{scratch}/build/{test}.log', 'w') as log:
            if subprocess.run(command, cwd=scratch, timeout=limit, stdout=log, stderr=log,
                              stdin=subprocess.DEVNULL).returncode == 0:
                return []
    except subprocess.TimeoutExpired:
        pass
    cases = dict.fromkeys(re.findall(r'\[  FAILED  \] (\S+)(?: \(|\n)', open(f'{scratch}/build/{test}.log').read()))
    return list(cases) or [test]


limits = {}
build() or sys.exit('mutate.sh: the room does not build')
for test in wanted:
    start = time.time()
    runs(test, 1200) and sys.exit(f'mutate.sh: {test} fails without a fault')
    limits[test] = 10 * (time.time() - start) + 10
planted = caught = 0
for _, path, number, column, old, new in choose():
    whole = open(f'{scratch}/{path}').read()
    lines = whole.split('\n')
    line = lines[number]
    lines[number] = line[:column] + new + line[column + len(old):]
    open(f'{scratch}/{path}', 'w').write('\n'.join(lines))
    if build():
        failing = []
        for test in wanted:
            if not failing or 'MUTATE_ALL' in os.environ:
                failing += runs(test, limits[test])
        planted, caught = planted + 1, caught + bool(failing)
        print(f'{"caught" if failing else "MISSED"} {path}:{number + 1}: {old} -> {new} in: {line.strip()}', '|',
              ' '.join(failing), flush=True)
    open(f'{scratch}/{path}', 'w').write(whole)
    if planted == count:
        break
print(f'{room}: {caught} of {planted} faults caught')
PYTHON
