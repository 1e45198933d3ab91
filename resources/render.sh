#!/bin/sh
# SPDX-License-Identifier: MIT
# Renders the SVG sources below svg/ to the PNG files that the library loads.
#
#   render.sh          writes the PNG files into this folder
#   render.sh --check  renders elsewhere and fails if a PNG here is not what its source gives
#
# Needs rsvg-convert (Debian: librsvg2-bin). No drawing uses a font or an outside file, and the
# output holds no date, so one version of rsvg-convert always gives the same bytes.
set -eu

here=$(cd "$(dirname "$0")" && pwd)
out=$here

# render SOURCE SIZE TARGET: one square picture; names are relative, without .svg and .png.
render() {
  mkdir -p "$out/$(dirname "$3")"
  rsvg-convert --width "$2" --height "$2" --format png --output "$out/$3.png" "$here/svg/$1.svg"
}

render_all() {
  for name in ArriThumb CinemaDNGThumb REDVideoThumb; do
    render "templates/$name" 256 "templates/$name"
  done

  render PNG/SP_VideoColored_Sm_N_D 16 PNG/SP_VideoColored_Sm_N_D
  render PNG/SP_VideoColored_Xl_N_D 32 PNG/SP_VideoColored_Xl_N_D
  render PNG/SP_VideoColored_48x48_N_D 48 PNG/SP_VideoColored_48x48_N_D

  render pictures/10000 256 pictures/10000
  render pictures/10000 32 pictures/10000-32
  render pictures/10000 16 pictures/10000-16

  for source in "$here"/svg/icons/*.svg; do
    name=$(basename "$source" .svg)
    for size in 16 32 48; do
      render "icons/$name" "$size" "icons/$size/$name"
    done
  done
}

# Compares what was rendered into $out with this folder, in both directions.
compare() {
  status=0
  for folder in templates PNG pictures icons; do
    diff -rq "$out/$folder" "$here/$folder" || status=1
  done
  return $status
}

case "${1-}" in
  '')
    render_all
    ;;
  --check)
    out=$(mktemp -d)
    trap 'rm -rf "$out"' EXIT
    render_all
    compare
    ;;
  *)
    echo "usage: $0 [--check]" >&2
    exit 2
    ;;
esac
