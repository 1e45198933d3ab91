#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Documents.sh SOURCE_DIR BUILD_DIR: runs the commands of README.md on the sample card and compares their
# output; runs the examples of the manual page, and compares its options with --help of each command.
# "./browse" without arguments and "./test" build; BuildScripts.sh tests them.
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

# The manual page. Its paths are below the folder $work/root, and its examples can be run in this order.
mkdir -p "$work"/root/{media,backup,mnt/archive/day1,run}
for card in media/CARD mnt/archive/day1/CARD; do bash "$source_dir/tools/make-sample-card" "$work/root/$card"; done
python3 - "$source_dir/docs/sorvik.1" "$work" << 'PYTHON'
import os, re, shutil, subprocess, sys
page, work = open(sys.argv[1]).read().replace("\\-", "-"), sys.argv[2]
env = dict(os.environ, LC_ALL="C", LANGUAGE="", PATH=work + ":" + os.environ["PATH"])

def section(name):
    return re.search(rf"^\.SH {name}\n(.*?)(?=^\.SH |\Z)", page, re.M | re.S)[1]

def help_of(command):
    text = subprocess.run(["sorvik", "help", command], env=env, capture_output=True, text=True, check=True).stdout
    return set(re.findall(r"^  (-[-a-z0]+)", text, re.M))

# {option: commands that accept it}, of the help and of the page.
commands = re.findall(r"^\.TP\n\\fB(\w+)\\fR", section("COMMANDS"), re.M)
accepted, described = {}, {}
for command in commands:
    for option in help_of(command):
        accepted.setdefault(option, set()).add(command)
for tag, text in re.findall(r"^\.TP\n(.*)\n((?:[^.].*\n)+)", section("OPTIONS"), re.M):
    bold = re.findall(r"\\fB(\w+)\\fR", text.split(":")[0]) if text.startswith("With ") else commands
    if text.startswith("With all commands except"):
        bold = set(commands) - set(bold) - {"help"}
    for option in re.findall(r"\\fB(-[-a-z0]+)\\fR", tag):
        described[option] = set(bold)
if len(commands) < 16 or len(accepted) < 30:
    sys.exit("too few commands or options found")
for option in accepted.keys() | described.keys() - {"-h", "-V", "--help", "--version"}:
    if accepted.get(option) != described.get(option):
        sys.exit(f"{option}: accepted by {accepted.get(option)}, described for {described.get(option)}")

examples = "".join(re.findall(r"^\.nf\n(.*?)^\.fi$", section("EXAMPLES"), re.M | re.S))
examples = examples.replace("\\(aq", "'").replace("\\e", "\\").splitlines()
if len(examples) < 14:
    sys.exit("too few examples found")
for example in examples:
    tools = re.findall(r"\| (jq|rsync|tar)\b", example)
    missing = [tool for tool in tools if not shutil.which(tool)]
    if missing:
        print(f"skipped: {missing[0]} is not installed: {example}")
        continue
    command = re.sub(r"(?<= )/(?=media|backup|mnt)", work + "/root/", example).replace("...", "true")
    done = subprocess.run(["bash", "-o", "pipefail", "-c", command], cwd=work + "/root/run", env=env,
                          capture_output=True, text=True)
    if done.returncode != 0 or "max_by" in example and done.stdout != "Ferry leaves\n":
        sys.exit(f"$ {example}\n{done.stdout}{done.stderr}")
for path in ("backup/CARD/CONTENTS/CLIP/0003ED.XML", "backup/SHOT/CONTENTS/CLIP/0001AB.XML"):
    if not os.path.exists(f"{work}/root/{path}"):
        sys.exit(f"the examples haven't written {path}")
PYTHON
