#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Completion.sh SOURCE_DIR BUILD_DIR: completes command lines in bash, zsh and fish.
set -euo pipefail
source_dir=$1
build_dir=$(cd "$2" && pwd)
command -v python3 > /dev/null || { echo "skipped: python3 is not installed"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
bash "$source_dir/tools/make-sample-card" "$work/my card"
mkdir "$work/home"

# bash and zsh run in a terminal: one key inserts all matches, another one saves and clears the line.
cat > "$work/home/.bashrc" << BASH
. "$source_dir/host/completion/sorvik.bash"
bind '"\C-xa": insert-completions'
save() { printf '%s\n' "\$READLINE_LINE" >> "\$SAVED"; READLINE_LINE=; }
bind -x '"\C-xs": save'
PS1='ready> '
BASH
cat > "$work/home/.zshrc" << ZSH
fpath=("$source_dir/host/completion" \$fpath)
autoload -Uz compinit && compinit -D -u
zle -C all complete-word _generic
zstyle ':completion:all::::' completer _all_matches _complete
zstyle ':completion:all:*' insert true
save() { print -r -- "\$BUFFER" >> "\$SAVED"; BUFFER= }
zle -N save
bindkey -e
bindkey '^Xa' all
bindkey '^Xs' save
PS1='ready> '
ZSH

PATH=$build_dir:$PATH python3 - "$source_dir" "$work" << 'PYTHON'
import os, pty, re, select, shutil, subprocess, sys, time
source_dir, work = sys.argv[1:]
KEYS = "0001AB 0002CC 0003ED"
CASES = [  # a line, and the words that are offered for the last one
    ("sorvik che", "check"),
    ("sorvik help ca", "cards catalog"),
    ("sorvik owner --", "--json --ndjson --clips-only --catalog --core --help --version"),
    ("sorvik providers --", "--json --core --help --version"),
    ("sorvik ls --provider avc", "avchd"),
    ("sorvik fields cine", "cinemadng"),
    ("sorvik ls --fields Name,dur", "Name,duration"),
    ("sorvik catalog --only card,f", "card,file"),
    (r"sorvik join my\ card 0001AB --format o", "otio"),
    (r"sorvik entry my\ card ", KEYS),
    (r"sorvik entry --provider p2 my\ card 000", KEYS),
    (r"sorvik --json entry my\ card 00", KEYS),
    (r"sorvik thumb -o x.png my\ card 0001AB 0002", "0002CC"),
    (r"sorvik files ./my\ card/ 0003", "0003ED"),
    (r"sorvik check my", r"my\ card"),
    (r"sorvik check --against my", r"my\ card"),
]
MAX_SECONDS = 120

def in_terminal(shell, arguments):
    """Returns the completed lines."""
    saved = f"{work}/saved.{shell}"
    open(saved, "w").close()
    env = dict(os.environ, HOME=f"{work}/home", ZDOTDIR=f"{work}/home", SAVED=saved, TERM="dumb", LC_ALL="C.UTF-8")
    pid, terminal = pty.fork()
    if pid == 0:
        os.chdir(work)
        os.execvpe(shell, [shell] + arguments, env)
    log, end = b"", time.monotonic() + MAX_SECONDS

    def wait_for(condition):
        nonlocal log
        while not condition():
            if time.monotonic() > end:
                sys.exit(f"{shell} doesn't complete; its terminal: {log.decode(errors='replace')}")
            if select.select([terminal], [], [], 0.05)[0]:
                log += os.read(terminal, 65536)

    wait_for(lambda: b"ready> " in log)
    for count, (line, _) in enumerate(CASES, 1):
        os.write(terminal, line.encode() + b"\x18a\x18s")
        wait_for(lambda: len(open(saved).readlines()) == count)
    os.close(terminal)
    os.waitpid(pid, 0)
    return open(saved).read().splitlines()

def in_fish():
    script = f"source '{source_dir}/host/completion/sorvik.fish'\n"
    for line, _ in CASES:
        script += f"complete -C '{line}'; echo\n".replace("\\", "\\\\")
    done = subprocess.run(["fish", "--no-config", "-c", script], cwd=work, env=dict(os.environ, HOME=f"{work}/home"),
                          capture_output=True, text=True, check=True)
    blocks = re.sub(r"\t.*", "", done.stdout).split("\n\n")
    return [line + " " + block.replace(" ", r"\ ") for (line, _), block in zip(CASES, blocks)]

def words(text):
    return {word.rstrip("/") for word in re.findall(r"(?:\\.|\S)+", text)}

failed = False
for shell, run in (("bash", lambda: in_terminal("bash", ["--noprofile", "-i"])),
                   ("zsh", lambda: in_terminal("zsh", ["-d", "-i"])), ("fish", in_fish)):
    if not shutil.which(shell):
        print(f"skipped: {shell} is not installed")
        continue
    for (line, expected), completed in zip(CASES, run(), strict=True):
        offered = words(completed) - words(line)
        if offered != words(expected):
            print(f"{shell} offers {sorted(offered)} for '{line}'")
            failed = True
sys.exit(failed)
PYTHON
