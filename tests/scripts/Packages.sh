#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Packages.sh SOURCE_DIR: the commands at the top ask for missing packages by name, fetch the package
# lists only where that helps, and ask for nothing where all is there. apt-get is a stand-in here.
set -euo pipefail
source_dir=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/bin" "$work/cmake"
cd "$work"

cat > bin/apt-get << 'STUB'
#!/bin/sh
for word; do last=$word; done
case " $* " in
  *" update "*) echo update >> log; touch updated ;;
  *) echo "install $last" >> log; [ -e updated ] ;;
esac
STUB
printf '#!/bin/sh\nexec "$@"\n' > bin/sudo
chmod +x bin/*
PATH=$work/bin:$PATH
. "$source_dir/tools/build.sh"

expect() {
  local name=$1 wanted=$2
  [ "$(cat log 2> /dev/null)" = "$wanted" ] || { echo "FAIL $name:"; cat log; exit 1; }
  rm -f log updated
}

printf '# sets\nbash build\nno-such-package-a build\nno-such-package-b guard\n' > cmake/packages.txt
need_packages build 2> /dev/null
expect "stale lists" $'install no-such-package-a\nupdate\ninstall no-such-package-a'

touch updated
need_packages build test guard 2> /dev/null
expect "fresh lists" 'install no-such-package-b'

printf 'bash build\ncoreutils test\n' > cmake/packages.txt
need_packages build test
expect "nothing missing" ''

for script in browse test .ci/run tools/build.sh tools/make-sample-card; do
  bash -n "$source_dir/$script"
done
