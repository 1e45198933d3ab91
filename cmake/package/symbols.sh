#!/bin/sh
# SPDX-License-Identifier: MIT
# symbols.sh DPKG_GENSYMBOLS PACKAGE VERSION LIBRARY FOLDER: writes FOLDER/symbols.
set -eu
mkdir -p "$5/debian"
# dpkg-gensymbols reads the names of source and package from a control file.
printf 'Source: sorvikprovider\nMaintainer: SorvikProvider authors <authors@sorvikprovider.example>\n\nPackage: %s\nArchitecture: any\nDescription: library\n' "$2" \
  > "$5/debian/control"
cd "$5"
"$1" -p"$2" -v"$3" -e"$4" -O"$5/symbols" -q
