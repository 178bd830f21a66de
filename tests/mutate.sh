#!/bin/sh
# Plants small faults in a room's files, one at a time, and counts those that its tests catch:
#   tests/mutate.sh ROOM [COUNT [SEED]]       20 faults with seed 1 unless told; ROOM also a folder or file, or several: ui/view,ui/about
# Works on a copy of the checkout in build/mutate, one for each ROOM, so that several can run at once. A fault is caught
# when a test case fails twice, or twice nothing is heard of it for long. The cases most likely to catch it run
# first. Those not caught are printed as MISSED. The ones in tests/mutants-without-effect.txt are known to change nothing
# that anybody can notice, are counted apart and not planted.
#   MUTATE_TESTS="engine_tests"   runs other programs than the room's
#   MUTATE_ALL=1                  runs on to tell every case that catches a fault
#   MUTATE_QUICK=1                leaves out the longest cases, which otherwise run last
#   MUTATE_ONLY=TEXT              only faults whose printed line contains a line of TEXT, whatever COUNT
command -v python3 >/dev/null || { echo "mutate.sh: needs python3" >&2; exit 2; }
exec python3 - "$(cd "$(dirname "$0")/.." && pwd)" "$@" <<'PYTHON'
import filecmp, hashlib, os, re, shutil, signal, subprocess, sys, time

root, room = sys.argv[1], sys.argv[2].rstrip('/') if len(sys.argv) > 2 else sys.exit('which room?')
count, seed = int(sys.argv[3]) if len(sys.argv) > 3 else 20, sys.argv[4] if len(sys.argv) > 4 else '1'
only, to_the_end = os.environ.get('MUTATE_ONLY', '').splitlines(), 'MUTATE_ALL' in os.environ
signal.signal(signal.SIGTERM, lambda *_: sys.exit('mutate.sh: ended from outside'))
ENGINE, RENDER = 'engine_tests debug_picture_tests fuzz_detection', 'render_tests debug_picture_tests fuzz_render'
TESTS = {  # of a folder or file; the longest name that fits counts
    'engine': f'{ENGINE} reference_tests', 'engine/InitializationTask.cpp': 'init_task_tests',
    'engine/SystemThreads.cpp': 'init_task_tests', 'render': f'{RENDER} reference_tests',
    'render/ParameterSet': 'render_tests plugin_tests', 'diag': 'diag_tests storage_tests',
    'diag/module/ModuleVersion.cpp': 'update_tests', 'storage': 'storage_tests ui_tests', 'web': 'update_tests',
    'host': 'host_tests', 'host/services': 'host_tests plugin_tests', 'host/filter': 'host_tests plugin_tests',
    'host/metadata': 'host_tests fuzz_metadata fuzz_pictures', 'host/module': 'host_tests fuzz_metadata',
    'host/options': 'host_tests fuzz_files', 'host/pictures': 'host_tests fuzz_pictures',
    'plugin': 'diagnostic_tests plugin_tests fuzz_host', 'plugin/FinalRender.cpp': 'plugin_tests dialog_tests',
    'plugin/parameters': 'diagnostic_tests plugin_tests fuzz_script',
    'ui': 'look_tests dialog_tests', 'ui/fields': 'ui_tests dialog_tests', 'ui/settings': 'ui_tests dialog_tests',
    'ui/paint': 'look_tests viewer_tests view_tests dialog_tests',
    'ui/window': 'ui_tests look_tests viewer_tests dialog_tests', 'ui/display': 'view_tests dialog_tests',
    'ui/view': 'view_tests dialog_tests', 'ui/view/View': 'view_native_tests view_tests dialog_tests',
    'ui/preview': 'preview_tests dialog_tests', 'ui/pixels': 'preview_native_tests view_tests preview_tests',
    'ui/viewers': 'viewer_tests debug_picture_tests diagnostic_tests'}
PORTABLE = 'engine_tests reference_tests render_tests debug_picture_tests fuzz_detection fuzz_render ' \
           'fuzz_metadata preview_native_tests view_native_tests'.split()
SWAPS = [(' < ', ' <= '), (' <= ', ' < '), (' > ', ' >= '), (' >= ', ' > '), (' == ', ' != '), (' != ', ' == '),
         (' + ', ' - '), (' - ', ' + '), (' * ', ' / '), (' / ', ' * '), (' && ', ' || '), (' || ', ' && '),
         (' & ', ' | '), (' | ', ' & '), (' << ', ' >> '), (' >> ', ' << '), ('true', 'false'), ('false', 'true'),
         ('std::min', 'std::max'), ('std::max', 'std::min'), (' += ', ' -= '), ('++', '--'), ('left', 'right'),
         ('top', 'bottom'), ('width', 'height')]
# Nobody would notice: what only goes into the log, memory asked for early, the compiler's hints.
SKIPPED = re.compile(r'\s*(static_assert|using|va_end|(static )?constexpr|public|private)|'
                     r'.*(WriteLogLine\(|\.reserve\(|likely\]\])')
# A longer wait, a larger buffer, a system error that a message without one does not show.
SKIPPED_NUMBERS = re.compile(r'.*((Wait\w*|Sleep|sleep_for|SetTimer)\(|kDebugMessage, 0})|'
                             r'\s+(const |static )*[\w:]+ (\w+\[.*\](, )?)+( = .*)?;')


def faults_of(path):
    """All (line's number, column, old, new) in a file's code."""
    for number, line in enumerate(open(f'{root}/{path}').read().split('\n')):
        code = re.sub(r'"(\\.|[^"])*"', lambda text: '"' * len(text.group()), line.split('//')[0])
        if not code.startswith(' ') or SKIPPED.match(code):
            continue
        for old, new in SWAPS:
            for hit in re.finditer(re.escape(old) if old[0] == ' ' else rf'(?<!\w){re.escape(old)}(?!\w)', code):
                yield number, hit.start(), old, new
        for hit in re.finditer(r'(?<![\w.])(?<!\de[-+])\d+(?![\w.])', '' if SKIPPED_NUMBERS.match(code) else code):
            yield number, hit.start(), hit.group(), str(int(hit.group()) + 1)
        if hit := re.match(r'(\s*)(else )?if \((?!const|auto)(.*)\)( \{)?$', code):
            start, condition = hit.start(3), line[hit.start(3):hit.end(3)]
            yield number, start, condition, f'!({condition})'
        if hit := re.match(r'\s+([A-Za-z_:>.-]+\(.*\);)$', code):
            yield number, hit.start(1), line[hit.start(1):hit.end(1)], ';'


def choose():
    """All faults in the order of planting, which hangs on the text of their lines, not on what stands around them."""
    found = []
    for path in (f for f in git_files(*room.split(',')) if f.endswith(('.cpp', '.h'))):
        lines = open(f'{root}/{path}').read().split('\n')
        for number, column, old, new in faults_of(path):
            line = lines[number]
            key = f'{seed} {os.path.basename(path)} {line.strip()} {column} {new}'
            heads = [h for h in lines[:number] if re.match(r'[A-Za-z][^=]*\(', h)]
            place = path + ' ' + (re.split(r'\W', heads[-1].split('(')[0])[-1] if heads else '-')
            planted = line[:column] + new + line[column + len(old):]
            name = f'{place} | {old.strip()} -> {new.strip()} | {planted.strip()}'
            found.append((hashlib.sha1(key.encode()).hexdigest(), path, number, planted, name))
    return sorted(found)


def git_files(*under):
    return subprocess.run(['git', '-C', root, 'ls-files', *under], capture_output=True, text=True).stdout.split('\n')


scratch = f'{root}/build/mutate/{re.sub("[/,]", "-", room)}{"-again" if only else ""}'
for name in git_files():
    if os.path.isfile(f'{root}/{name}'):
        os.makedirs(os.path.dirname(f'{scratch}/{name}'), exist_ok=True)
        if not os.path.exists(f'{scratch}/{name}') or not filecmp.cmp(f'{root}/{name}', f'{scratch}/{name}', False):
            shutil.copy(f'{root}/{name}', f'{scratch}/{name}')


def build(test):
    preset = 'native-release' if test in PORTABLE else 'windows-x64'
    if not os.path.exists(f'{scratch}/build/{preset}/build.ninja'):
        subprocess.run(['cmake', '--preset', preset], cwd=scratch, check=True, stdout=subprocess.DEVNULL)
        if preset == 'windows-x64':
            subprocess.run('sh cmake/wine-setup.sh >/dev/null 2>&1', cwd=scratch, shell=True, check=True)
    return subprocess.run(['ninja', '-j1', '-C', f'build/{preset}', test], cwd=scratch, capture_output=True).returncode == 0


def run(test, cases='*', silence=600, stop=not to_the_end):
    """The cases that fail, or what happened instead; each is told in the program's log."""
    program, log = f'build/native-release/bin/{test}', f'{scratch}/build/{test}.log'
    if test not in PORTABLE:
        program = f'build/windows-x64/bin/{test}.exe'
    command = ['sh', 'cmake/wine-run.sh'][:0 if test in PORTABLE else 2] + [program]
    if test.startswith('fuzz_'):
        corpus = f'tests/fuzz/corpus/{test[5:]}'
        command += [corpus, re.search(rf'_fuzz\({test[5:]} (\d+)', open(f'{scratch}/tests/fuzz.cmake').read())[1]]
    else:
        command += [f'--gtest_filter={cases}'] + ['--gtest_fail_fast'] * stop
    with open(log, 'w') as out:
        running = subprocess.Popen(command, cwd=scratch, stdout=out, stderr=out, stdin=subprocess.DEVNULL,
                                   start_new_session=True)
    size, heard = 0, time.time()
    try:
        while running.poll() is None:
            time.sleep(0.1)
            if (grown := os.path.getsize(log)) != size:
                size, heard = grown, time.time()
            if time.time() > heard + silence:
                return [f'{test}:silence']
    finally:
        if running.poll() is None:
            os.killpg(running.pid, signal.SIGKILL)
            running.wait()
            if test not in PORTABLE:
                subprocess.run(['wineserver', '-k'], env={**os.environ, 'WINEPREFIX': f'{scratch}/build/wine'})
    told = open(log, errors='replace').read()
    failing = re.findall(r'\[  FAILED  \] (\w+\.[\w/]+)(?: \(|,|\n)', told)
    crashed = running.returncode or not ('runs held' in told or '[  PASSED  ]' in told)
    return list(dict.fromkeys(failing)) or ([f'{test}:{running.returncode}'] if crashed else [])


known = {}  # of each program: the milliseconds of its cases that pass without a fault
caught_last = {}  # of each file and folder: the cases that caught a fault, the last first


def know(test):
    if test not in known:
        build(test) or sys.exit(f'mutate.sh: {test} does not build')
        failing = run(test, stop=False)
        failing and print(f'{test} without a fault: {" ".join(failing)}', flush=True)
        passed = re.findall(r'\[       OK \] (\S+) \((\d+) ms\)', open(f'{scratch}/build/{test}.log').read())
        known[test] = {case: int(ms) for case, ms in passed}
    return known[test]


def likely(test, path):
    """Cases that caught the last faults around here, then those whose names have words of the file's."""
    words = lambda name: set(w.lower().rstrip('s') for w in re.findall(r'[A-Z][a-z]+|[A-Z]+(?![a-z])', name))
    near = caught_last.get(path, []) + caught_last.get(os.path.dirname(path), [])
    named = [(-len(words(case) & words(os.path.basename(path))), ms, case) for case, ms in known[test].items()]
    ranked = [c for c in near if c in known[test]][:8] + [case for fit, ms, case in sorted(named) if fit]
    first, left = [], sum(known[test].values()) / 4
    for case in dict.fromkeys(ranked):
        if (left := left - known[test][case]) >= 0 or case in near[:1]:
            first.append(case)
    return first


def catching(test, path):
    cases, silence = know(test), 30 + max([0, *known[test].values()]) / 200
    if test.startswith('fuzz_'):
        return run(test, '', silence)
    first = likely(test, path) if sum(cases.values()) > 4000 and not to_the_end else []
    slow = [case for case, ms in cases.items() if ms > max(5000, sum(cases.values()) / 15) and case not in first]
    todo = [first, [case for case in cases if case not in first + slow], slow * ('MUTATE_QUICK' not in os.environ)]
    while todo:
        if not (group := todo.pop(0)):
            continue
        failing = run(test, ':'.join(group), silence)
        if failing and run(test, failing[0] if '.' in failing[0] else ':'.join(group), silence):
            return failing
        if failing:  # only once, which was the machine's fault: the rest without the case
            todo.insert(0, [case for case in group if case not in failing])
    return []


reasons = {}
with open(f'{root}/tests/mutants-without-effect.txt') as listed:
    for entry in (line.strip() for line in listed if not line.startswith('#')):
        reasons[entry.rpartition(' | ')[0]] = entry.rpartition(' | ')[2]
caught = missed = without = 0
for _, path, number, planted, name in choose():
    if only and not any(text in name for text in only):
        continue
    if not only and caught + missed + without >= count:
        break
    if name in reasons:
        without += 1
        print(f'without effect {name} | {reasons[name]}', flush=True)
        continue
    tests = (os.environ.get('MUTATE_TESTS') or TESTS[max((k for k in TESTS if path.startswith(k)), key=len)]).split()
    for test in tests:
        know(test)
    whole = open(f'{scratch}/{path}').read()
    lines = whole.split('\n')
    lines[number] = planted
    open(f'{scratch}/{path}', 'w').write('\n'.join(lines))
    failing, start, builds = [], time.time(), True
    for test in tests:
        builds = builds and build(test)
        if builds and (not failing or to_the_end):
            failing += catching(test, path)
    open(f'{scratch}/{path}', 'w').write(whole)
    if not builds and not failing:
        continue
    for place in (path, os.path.dirname(path)):
        caught_last[place] = failing + caught_last.get(place, [])
    caught, missed = caught + bool(failing), missed + (not failing)
    print(f'{"caught" if failing else "MISSED"} {name} | line {number + 1}, {time.time() - start:.0f} s',
          ' '.join(failing), flush=True)
print(f'{room}: {caught + missed + without} planted, {caught} caught, {without} without effect, {missed} missed')
PYTHON
