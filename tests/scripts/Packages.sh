#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Packages.sh SOURCE_DIR BUILD_DIR: makes the Debian packages of the build, and runs the program from an
# extracted copy; with SORVIK_TEST_TREE=1 also from a bare Debian tree that the packages are installed in.
set -euo pipefail
source_dir=$1
build_dir=$2
skip() { echo "skipped: $1"; exit 77; }
fail() { echo "FAIL: $*"; exit 1; }
grep '^SORVIK_SANITIZE:STRING=$' "$build_dir/CMakeCache.txt" > /dev/null || skip "an instrumented library isn't packaged"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Without the programs that cpack needs, it says so.
cmake=$(command -v cmake)
require=$source_dir/cmake/package/RequirePrograms.cmake
if PATH=$work "$cmake" -P "$require" > "$work/log" 2>&1; then fail "no program is required"; fi
tr -s '\n ' ' ' < "$work/log" | grep 'dpkg-shlibdeps is missing (apt-get install dpkg-dev)' > /dev/null ||
  fail "$(cat "$work/log")"
for program in dpkg-shlibdeps dpkg-gensymbols file; do
  command -v "$program" > /dev/null || skip "$program is not installed"
done

cpack --config "$build_dir/CPackConfig.cmake" -B "$work" > "$work/log" 2>&1 || fail "cpack: $(tail -5 "$work/log")"
version=$(sed -n 's/^project(SorvikProvider VERSION \([0-9.]*\).*/\1/p' "$source_dir/CMakeLists.txt")
major=${version%%.*}
packages="libsorvikprovider-dev libsorvikprovider$major python3-sorvik sorvik"
[ ! -x "$build_dir/sorvik-frame" ] || packages+=" sorvik-frame"
[ "$(cd "$work" && ls -- *.deb | sed 's/_.*//' | sort | tr '\n' ' ')" = "$packages " ] || fail "packages: $(ls "$work")"
for package in "$work"/*.deb; do dpkg-deb -x "$package" "$work/root"; done

depends() { dpkg-deb -f "$work/$1"_*.deb Depends; }
[[ $(depends libsorvikprovider-dev) == *"libsorvikprovider$major (= $version)"*libboost-dev* ]] ||
  fail "libsorvikprovider-dev depends on $(depends libsorvikprovider-dev)"
[[ $(depends sorvik) == *"libsorvikprovider$major (= $version)"* ]] || fail "sorvik depends on $(depends sorvik)"
[[ $(depends python3-sorvik) == *"libsorvikprovider$major (= $version)"*"python3 (<< 3."* ]] ||
  fail "python3-sorvik depends on $(depends python3-sorvik)"
[[ $(depends "libsorvikprovider$major") == *libxerces-c* ]] || fail "the library lacks the dependencies of its module"
dpkg-deb --ctrl-tarfile "$work/libsorvikprovider$major"_*.deb | tar -xO ./symbols |
  grep "^libSorvikProvider.so.$major libsorvikprovider$major" > /dev/null || fail "no symbols file"

for package in $packages; do
  doc=$work/root/usr/share/doc/$package
  grep -q 'Permission is hereby granted' "$doc/copyright" || fail "$package has no licence text"
  gzip -dc "$doc/changelog.gz" | grep "($version)" > /dev/null || fail "$package: the changelog lacks $version"
done
gzip -dc "$work/root/usr/share/man/man1/sorvik.1.gz" | grep '^.TH SORVIK' > /dev/null || fail "no man page"

bash "$source_dir/tools/make-sample-card" "$work/CARD"
"$work/root/usr/bin/sorvik" ls "$work/CARD" | grep 'Ferry leaves' > /dev/null || fail "the packaged program doesn't run"
PYTHONPATH=$work/root/usr/lib/python3/dist-packages /usr/bin/python3 -c \
  "import sorvik, sys; print(*sorvik.open(sys.argv[1]))" "$work/CARD" | grep 'Ferry leaves' > /dev/null ||
  fail "the packaged Python package doesn't work"
[ "$("$work/root/usr/bin/sorvik" --version)" = "sorvik $version" ] || fail "version"

# Hardening: read-only relocations, immediate binding, position-independent code, stack protector.
for binary in "$work/root/usr/bin/sorvik" "$(find "$work/root" -name "libSorvikProvider.so.$version")" \
    $(find "$work/root/usr/libexec" -name sorvik-frame); do
  readelf -d "$binary" | grep BIND_NOW > /dev/null || fail "$binary: lazy binding"
  readelf -l "$binary" | grep GNU_RELRO > /dev/null || fail "$binary: writable relocations"
  readelf -h "$binary" | grep 'Type:.*DYN' > /dev/null || fail "$binary: not position-independent"
  nm -D "$binary" | grep __stack_chk_fail > /dev/null || fail "$binary: no stack protector"
done
if command -v lintian > /dev/null; then
  lintian --allow-root --fail-on error "$work"/*.deb > "$work/lintian" 2>&1 || fail "$(grep '^E:' "$work/lintian")"
fi

# Installs the packages with their dependencies in a new tree. This downloads about 150 MB.
in_tree() {
  chroot "$tree" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"
}
test_in_tree() {
  local tree=$work/tree suite mirror left
  command -v debootstrap > /dev/null || { echo "skipped: debootstrap is not installed"; return; }
  [ "$(id -u)" = 0 ] || { echo "skipped: only root can make a bare tree"; return; }
  suite=$(. /etc/os-release && echo "${VERSION_CODENAME:-}")
  mirror=$(apt-get indextargets --format '$(REPO_URI) $(RELEASE) $(COMPONENT)' | awk -v suite="$suite" \
    '$2 == suite && $3 == "main" { print $1; exit }')
  debootstrap --variant=minbase "$suite" "$tree" "$mirror" > "$work/log" 2>&1 || fail "debootstrap: $(tail -5 "$work/log")"
  mkdir "$tree/packages"
  cp "$work"/*.deb "$tree/packages"
  bash "$source_dir/tools/make-sample-card" "$tree/CARD"
  in_tree apt-get update > "$work/log" 2>&1 || fail "apt-get update: $(tail -5 "$work/log")"
  in_tree sh -c 'apt-get install -y --no-install-recommends /packages/*.deb' > "$work/log" 2>&1 ||
    fail "the packages can't be installed: $(tail -20 "$work/log")"
  in_tree sorvik ls /CARD | grep 'Ferry leaves' > /dev/null || fail "sorvik doesn't run in a bare tree"
  in_tree sorvik thumb /CARD 0001AB -o /clip.png || fail "no picture in a bare tree"
  in_tree python3 -c 'import sorvik; print(*sorvik.open("/CARD"))' | grep 'Ferry leaves' > /dev/null ||
    fail "python3-sorvik doesn't work in a bare tree"
  # shellcheck disable=SC2086
  in_tree apt-get purge -y $packages > "$work/log" 2>&1 || fail "the packages can't be removed: $(tail -20 "$work/log")"
  left=$(find "$tree/usr" "$tree/etc" -iname '*sorvik*')
  [ -z "$left" ] || fail "removed packages leave $left"
}
[ "${SORVIK_TEST_TREE:-0}" = 0 ] || test_in_tree
