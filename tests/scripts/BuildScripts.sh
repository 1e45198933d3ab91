#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# BuildScripts.sh SOURCE_DIR: ./browse and tools/build.sh with stubs for apt-get, cmake and ninja.
set -euo pipefail
source_dir=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
chmod 755 "$work"
checkout=$work/checkout
mkdir -p "$work/bin" "$checkout/cmake"
cp -r "$source_dir"/{browse,test,tools} "$checkout"
cd "$checkout"

# The scripts find these programs only. apt-get fails until the package lists are updated.
for tool in bash cat chmod dirname dpkg-query env grep mkdir mktemp nproc rm sh touch wc; do
  ln -s "$(command -v $tool)" "$work/bin"
done
cat > "$work/bin/apt-get" << 'STUB'
#!/bin/sh
for word; do last=$word; done
echo "progress noise"
case " $* " in
  *" update "*) echo update >> log; [ ! -e offline ] && touch updated ;;
  *) echo "install $last" >> log; [ -e updated ] ;;
esac
STUB
printf '#!/bin/sh\necho "${USER_ID:-0}"\n' > "$work/bin/id"
printf '#!/bin/sh\necho "cmake $*" >> log\nmkdir -p build/release\ntouch build/release/build.ninja\n' > "$work/bin/cmake"
cat > "$work/bin/ninja" << 'STUB'
#!/bin/sh
echo "ninja $*" >> log
touch build/release/.ninja_log
printf '#!/bin/sh\necho "ran $*"\n' > build/release/sorvik
chmod +x build/release/sorvik
STUB
chmod +x "$work"/bin/{apt-get,id,cmake,ninja}
PATH=$work/bin

fail() { echo "FAIL: $*"; exit 1; }
# expect NAME MESSAGES LOG: what the last command printed on stderr, and the commands it ran.
expect() {
  [ "$(cat errors)" = "$2" ] || fail "$1 printed: $(cat errors)"
  [ "$(cat log 2> /dev/null)" = "$3" ] || fail "$1 ran: $(cat log)"
  rm -f log updated errors
}
. tools/build.sh

printf '# sets\nbash build\nno-such-package-a build\nno-such-package-b guard\n' > cmake/packages.txt
need_packages build 2> errors
expect "outdated lists" 'installing 1 package' $'install no-such-package-a\nupdate\ninstall no-such-package-a'

touch updated
need_packages build test guard 2> errors
expect "current lists" 'installing 2 packages' 'install no-such-package-b'

touch offline
if need_packages build 2> errors; then fail "a failed installation is no error"; fi
expect "no network" "installing 1 package
could not install no-such-package-a (see $checkout/build/packages.log)" $'install no-such-package-a\nupdate'
grep -q 'progress noise' build/packages.log || fail "the log lacks the output of apt-get"

if USER_ID=1000 ./browse 2> errors; then fail "missing packages are no error"; fi
expect "neither root nor sudo" 'missing packages, which only root or sudo can install: no-such-package-a' ''

printf 'bash build\nno-such-package-c test\n' > cmake/packages.txt
[ "$(./browse ls CARD 2> errors)" = 'ran ls CARD' ] || fail "the program wasn't run"
grep -q '^building' errors || fail "no message about the build"
[ "$(cat log)" = 'cmake --preset release -DSORVIK_BUILD_TESTS=OFF
ninja -C build/release -t commands sorvik sorvik_resources sorvik_python
ninja -C build/release sorvik sorvik_resources sorvik_python' ] || fail "the first run did: $(cat log)"
rm log

# A build of another user, on a machine without ninja and packages: root can write everywhere.
rm "$work/bin/ninja"
printf 'no-such-package build\n' > cmake/packages.txt
as_user=()
if [ "$EUID" -eq 0 ]; then
  as_user=(/usr/bin/setpriv --reuid=61236 --regid=61236 --clear-groups)
else
  chmod a-w . build build/release
fi
if [ "$EUID" -ne 0 ] || "${as_user[@]}" cat browse > /dev/null 2>&1; then
  [ "$("${as_user[@]}" ./browse ls CARD 2>&1)" = 'ran ls CARD' ] || fail "a read-only build doesn't run"
  rm -f build/release/sorvik 2> /dev/null || { chmod u+w build/release && rm build/release/sorvik && chmod u-w build/release; }
  [ "$("${as_user[@]}" ./browse 2>&1)" = "cannot build: no permission to write $checkout/build" ] ||
    fail "a read-only checkout without a build"
fi
[ "$EUID" -eq 0 ] || chmod u+w . build build/release

for script in browse test .ci/run tools/build.sh tools/make-sample-card; do
  bash -n "$source_dir/$script"
done

# The real build needs none of the packages of the tests.
PATH=/usr/local/bin:/usr/bin:/bin
cmake -S "$source_dir" -B "$work/build" -G Ninja -DSORVIK_BUILD_TESTS=OFF \
    -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON \
    > "$work/cmake.log" 2>&1 || { cat "$work/cmake.log"; fail "the build without tests can't be configured"; }
