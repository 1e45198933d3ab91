#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# ReadmeCommands.sh SOURCE_DIR BUILD_DIR: runs the commands of README.md on the sample card and compares
# their output. "./browse" without arguments and "./test" build; BuildScripts.sh tests them.
set -euo pipefail
source_dir=$1
build_dir=$(cd "$2" && pwd)
command -v python3 > /dev/null || { echo "skipped: python3 is not installed"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/build/demo"
bash "$source_dir/tools/make-sample-card" "$work/build/demo/CARD"
ln -s "$build_dir" "$work/build/release"
ln -s "$build_dir/sorvik" "$work/browse"
ln -s "$build_dir/sorvik" "$work/sorvik"

python3 - "$source_dir/README.md" "$work" << 'PYTHON'
import os, re, subprocess, sys
readme, work = sys.argv[1:]
env = dict(os.environ, LC_ALL="C", LANGUAGE="", PATH=work + ":" + os.environ["PATH"])
blocks = re.findall(r"^```(?:\w*)\n(.*?)^```$", open(readme).read(), re.M | re.S)
steps = []  # [command, expected lines]
for line in "".join(b for b in blocks if b.startswith("$ ")).splitlines():
    if line.startswith("$ "):
        steps.append([line[2:], []])
    elif line and steps:
        steps[-1][1].append(line)
run = 0
for command, expected in steps:
    if command in ("./browse", "./test"):
        continue
    if "import sorvik" in command and not os.path.isdir(work + "/build/release/python"):
        print("skipped: this build has no Python module:", command)
        continue
    done = subprocess.run(["bash", "-c", command], cwd=work, env=env, capture_output=True, text=True)
    run += 1
    output = iter(re.sub(" +", " ", line) for line in done.stdout.splitlines())
    for line in expected:
        wanted = re.sub(" +", " ", line)
        if wanted == "...":
            continue
        if not any(got.endswith(wanted[3:]) if wanted.startswith(".../") else got == wanted for got in output):
            sys.exit(f"$ {command}\nlacks: {line}\noutput:\n{done.stdout}{done.stderr}")
    if not expected and done.returncode != 0:
        sys.exit(f"$ {command}\nfailed: {done.stderr}")
if run < 8:
    sys.exit(f"only {run} commands found")
PYTHON
