#!/bin/sh
# Makes the Wine prefix in the build folder, once, and starts its server. Never call it inside a pipe: the server
# would keep the pipe open.
#   - fonts: Debian's Wine does not see the ones of fonts-wine, and dialogs would come out too short;
#   - the crash dialog off, or a crashing test would wait for a click for ever;
#   - a system library that versions before 9 lack and the picture library asks for (wine-shim);
#   - the null graphics driver, so that no X server is needed (BRILLATRIX_WINE_GRAPHICS=x11 to see windows).
set -eu
build=$(cd "$(dirname "$0")/.." && pwd)/build
export WINEPREFIX="${BRILLATRIX_WINEPREFIX:-$build/wine}" WINEARCH=win64 WINEDEBUG=-all
if [ ! -f "$WINEPREFIX/.ready" ]; then
    rm -rf "$WINEPREFIX"
    mkdir -p "$WINEPREFIX"
    wineboot -i </dev/null >/dev/null 2>&1
    cp /usr/share/wine/fonts/*.ttf /usr/share/wine/fonts/*.fon "$WINEPREFIX/drive_c/windows/Fonts/" 2>/dev/null || true
    wine reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f </dev/null >/dev/null 2>&1
    wine reg add 'HKCU\Software\Wine\Drivers' /v Graphics /t REG_SZ /d "${BRILLATRIX_WINE_GRAPHICS:-null}" /f \
        </dev/null >/dev/null 2>&1
    wineserver -k || true
    wineserver -w || true
    touch "$WINEPREFIX/.ready"
fi
# Prefixes made by an earlier form of this script lack it too.
shim="$WINEPREFIX/drive_c/windows/system32/bcryptprimitives.dll"
[ -f "$shim" ] || x86_64-w64-mingw32-gcc-posix -O2 -s -shared -o "$shim" \
    "$(dirname "$0")/wine-shim/bcryptprimitives.c" -lbcrypt
wineserver -p60 </dev/null >/dev/null 2>&1 || true
wine cmd /c exit </dev/null >/dev/null 2>&1
