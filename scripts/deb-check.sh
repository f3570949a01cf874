#!/usr/bin/env bash
# Checks the Debian package that `make deb` wrote in a build folder
# (build-release by default):
#   - lintian finds no errors (its warnings are shown);
#   - the package holds exactly the files that `cmake --install` puts
#     under /usr, and its version is the program's release;
#   - it depends on the Qt libraries the program links;
#   - as root, with the package not installed yet: apt installs it, both
#     programs answer from /usr/bin and the program's first start ends by
#     itself, and apt remove leaves none of its files behind.
set -euo pipefail

build=${1:-build-release}
shopt -s nullglob
debs=("$build"/tarvello-maths_*.deb)
if [ ${#debs[@]} -ne 1 ]; then
  echo "deb-check: expected one tarvello-maths_*.deb in $build, found ${#debs[@]}" >&2
  exit 1
fi
deb=$(realpath "${debs[0]}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "deb-check: $*" >&2; exit 1; }

echo "deb-check: lintian $(basename "$deb")"
lintian --fail-on error "$deb" || fail "lintian found errors"

DESTDIR="$work/stage" cmake --install "$build" --prefix /usr >/dev/null
(cd "$work/stage" && find . ! -type d | sed 's|^\.||' | sort) >"$work/install.list"
dpkg-deb -c "$deb" | awk '$1 !~ /^d/ { sub(/^\./, "", $6); print $6 }' | sort >"$work/deb.list"
diff -u "$work/install.list" "$work/deb.list" || fail "the package's files differ from the install's"

# The programs write their configuration folder even for --version.
mkdir -p "$work/home"
export HOME="$work/home" QT_QPA_PLATFORM=offscreen
release=$("$work/stage/usr/bin/tarvello-maths" --version | awk 'NR == 1 { print $2 }')
version=$(dpkg-deb -f "$deb" Version)
[ "$version" = "$release" ] || fail "package version $version, program release $release"

depends=$(dpkg-deb -f "$deb" Depends)
for lib in libqt5core5a libqt5gui5 libqt5widgets5 libc6; do
  [[ "$depends" == *"$lib"* ]] || fail "Depends lacks $lib: $depends"
done
echo "deb-check: $(basename "$deb") holds $(wc -l <"$work/deb.list") files; Depends: $depends"

if [ "$(id -u)" -ne 0 ] || dpkg-query -W -f='${Status}' tarvello-maths 2>/dev/null | grep -q installed; then
  echo "deb-check: install and removal not tried (needs root and the package not installed)"
  exit 0
fi
export DEBIAN_FRONTEND=noninteractive
apt-get install -y -q -o DPkg::Lock::Timeout=300 "$deb" >"$work/apt.log" 2>&1 || { cat "$work/apt.log"; fail "apt install failed"; }
removed=0
remove() { [ $removed -eq 1 ] || apt-get remove -y -q -o DPkg::Lock::Timeout=300 tarvello-maths >>"$work/apt.log" 2>&1; removed=1; }
trap 'remove; rm -rf "$work"' EXIT
files=$(dpkg -L tarvello-maths | while read -r f; do [ -d "$f" ] || echo "$f"; done)
/usr/bin/tarvello-maths --version >/dev/null || fail "the installed tarvello-maths doesn't answer --version"
/usr/bin/tvdb --version >/dev/null || fail "the installed tvdb doesn't answer --version"
(cd "$HOME" && /usr/bin/tarvello-maths 2>"$work/start.err") || fail "the installed program failed to start"
grep -q 'Unattended "Welcome" answered "Quit"' "$work/start.err" || { cat "$work/start.err"; fail "the first start didn't ask its welcome"; }
remove
for f in $files; do
  [ ! -e "$f" ] || fail "$f is left after apt remove"
done
echo "deb-check: apt installed the package, the programs ran from /usr/bin, apt remove took $(echo "$files" | wc -l) files away"
