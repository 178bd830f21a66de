#!/bin/sh
# Installs the Debian packages that are missing: install-packages.sh PACKAGE...
set -eu
missing=""
for package in "$@"; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q '^install ok installed' || missing="$missing $package"
done
[ -n "$missing" ] || exit 0
as_root=""
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || {
        echo "These packages are missing and neither root nor sudo is at hand:$missing" >&2
        exit 1
    }
    as_root=sudo
fi
echo "Installing:$missing" >&2
$as_root apt-get update -qq </dev/null >&2
# shellcheck disable=SC2086  # a list of package names
DEBIAN_FRONTEND=noninteractive $as_root apt-get install -y -qq --no-install-recommends $missing </dev/null >&2
