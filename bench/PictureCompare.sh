#!/bin/bash
# SPDX-License-Identifier: MIT
# Compares pictures of clips with ffmpegthumbnailer, one core with two, and measures the memory of a large
# contact sheet. Needs ffmpeg and ffmpegthumbnailer.
#   bench/PictureCompare.sh build/release [FOLDER]
# FOLDER keeps the clips for the next run. Each time is the best of ROUNDS interleaved runs (default 7).
set -euo pipefail
sorvik=$1/sorvik
folder=${2:-}
if [ -z "$folder" ]; then
  folder=$(mktemp -d)
  trap 'rm -rf "$folder"' EXIT
fi
rounds=${ROUNDS:-7}

encode() {  # size, duration, file, options...
  ffmpeg -v error -y -f lavfi -i "testsrc2=s=$1:r=25:d=$2" "${@:4}" "$3" < /dev/null
}
if [ ! -e "$folder/many/1999.mov" ]; then
  mkdir -p "$folder/one" "$folder/hundred" "$folder/many"
  encode 1920x1080 10 "$folder/one/interlaced.MTS" -c:v libx264 -preset veryfast -b:v 20M -g 13 \
      -flags +ilme+ildct -x264opts tff=1 -f mpegts -mpegts_m2ts_mode 1
  encode 3840x2160 5 "$folder/one/xavc.MP4" -c:v libx264 -preset veryfast -b:v 60M -g 13
  encode 1440x1080 3 "$folder/one/p2.MXF" -c:v dvvideo -pix_fmt yuv422p -aspect 16:9 -f mxf_opatom
  encode 1920x1080 1 "$folder/clip.mov" -c:v libx264 -preset veryfast -b:v 20M -g 13
  for i in $(seq 100 199); do ln -f "$folder/clip.mov" "$folder/hundred/$i.mov"; done
  for i in $(seq 1000 1999); do ln -f "$folder/clip.mov" "$folder/many/$i.mov"; done
fi

milliseconds() {
  local begin end
  begin=$(date +%s%N)
  "$@" > /dev/null 2>&1
  end=$(date +%s%N)
  echo $(((end - begin) / 1000000))
}
least() { sort -n | head -n 1; }
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", a / b }'; }

for clip in interlaced.MTS xavc.MP4 p2.MXF; do
  : > "$folder/ours"
  : > "$folder/theirs"
  for _ in $(seq "$rounds"); do
    milliseconds ffmpegthumbnailer -i "$folder/one/$clip" -o "$folder/out.png" -s 320 >> "$folder/theirs"
    milliseconds "$sorvik" thumb "$folder/one" "$clip" -o "$folder/out.png" --size 320x320 >> "$folder/ours"
  done
  ours=$(least < "$folder/ours")
  theirs=$(least < "$folder/theirs")
  echo "$clip: sorvik thumb $ours ms, ffmpegthumbnailer $theirs ms, ratio $(ratio "$ours" "$theirs")"
done

: > "$folder/single"
: > "$folder/double"
for _ in $(seq "$rounds"); do
  milliseconds taskset -c 0 "$sorvik" sheet "$folder/hundred" -o "$folder/out.html" >> "$folder/single"
  milliseconds taskset -c 0,1 "$sorvik" sheet "$folder/hundred" -o "$folder/out.html" >> "$folder/double"
done
single=$(least < "$folder/single")
double=$(least < "$folder/double")
echo "sheet of 100 clips: $single ms on one core, $double ms on two, speed-up $(ratio "$single" "$double")"

# The resident memory of the program and its helpers, sampled.
"$sorvik" sheet "$folder/many" -o "$folder/out.html" &
program=$!
most=0
most_program=0
while kill -0 "$program" 2> /dev/null; do
  total=$(ps -o rss= -p "$program" --ppid "$program" | awk '{ sum += $1 } END { print sum + 0 }')
  [ "$total" -le "$most" ] || most=$total
  own=$(ps -o rss= -p "$program" | tr -d ' ')
  [ "${own:-0}" -le "$most_program" ] || most_program=$own
  sleep 0.2
done
wait "$program"
echo "sheet of 1000 clips: at most $((most_program / 1024)) MB, with the helpers $((most / 1024)) MB"
