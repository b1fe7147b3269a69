#!/usr/bin/env python3
"""Kills programs at random moments and looks what is left.

    kill_runs.py BIN [--saves N] [--sessions N] [--seed S]

Saves: `vellum save` over a file that is there, killed somewhere between its start and its end. Behind each there must be
the old or the new file; what else is left is counted, and must be gone behind the next save.

Sessions (need the target edit_session of the tests): a document is edited without an end, a copy for recovery follows each edit,
and the program is killed. The copy must have all edits but the last one, and Undo must take them back.
"""
import argparse
import concurrent.futures
import os
import pathlib
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "tests" / "faults"))
import pictures  # noqa: E402

LEVELS = 10  # UndoLevels as it comes


def environment(home):
    return dict(os.environ, XDG_CONFIG_HOME=str(home), XDG_STATE_HOME=str(home))


def killed_save(program, top, number, old, seconds, chance):
    """What stood there behind a save that was killed: old, new or None, and how many names were left."""
    folder = top / f"save{number}"
    folder.mkdir()
    (folder / "t.png").write_bytes(old)
    child = subprocess.Popen([program, "--set", "AutoUpdateTime=0", "save", "--recompress", top / "in.png", folder / "t.png"],
                             stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, env=environment(top))
    time.sleep(chance.random() * seconds)
    child.send_signal(signal.SIGKILL)
    ended = child.wait() == 0
    return folder, ended, len(list(folder.iterdir())) - 1


def saves(options, program, top):
    chance = random.Random(options.seed)
    (top / "a.png").write_bytes(pictures.png(700, 500, 1))
    save = [program, "--set", "AutoUpdateTime=0", "save", "--recompress"]
    subprocess.run([program, "build", top / "a.png", top / "a.png", "-o", top / "in.png"], check=True, env=environment(top))
    began = time.monotonic()
    subprocess.run([*save, top / "in.png", top / "new.png"], check=True, env=environment(top))
    seconds = time.monotonic() - began
    new, old = (top / "new.png").read_bytes(), b"old content\n" * 1000
    counts = {"old": 0, "new": 0, "neither": 0, "left": 0, "not swept": 0}
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        def one(number):
            return killed_save(program, top, number, old, 1.2 * seconds, random.Random(f"{options.seed} {number}"))
        for folder, _, left in pool.map(one, range(options.saves)):
            content = (folder / "t.png").read_bytes()
            counts["old" if content == old else "new" if content == new else "neither"] += 1
            counts["left"] += left
            if left:
                subprocess.run([program, "--set", "AutoUpdateTime=0", "save", top / "a.png", folder / "t.png"], check=True,
                               env=environment(top), capture_output=True)
                counts["not swept"] += len(list(folder.iterdir())) - 1
            shutil.rmtree(folder)
    print(f"{options.saves} saves of {seconds * 1000:.0f} ms killed: " + ", ".join(f"{v} {k}" for k, v in counts.items()))
    return counts["neither"] + counts["not swept"]


def session(program, top, number, pause, longest, chance):
    """Edits that were made, that came back, and that Undo took back."""
    store = top / f"store{number}"
    home = top / f"home{number}"
    home.mkdir()
    child = subprocess.Popen([program, store, top / "a.png", str(pause)], stdout=subprocess.PIPE,
                             stderr=subprocess.DEVNULL, env=environment(home), text=True)
    first = child.stdout.readline()  # starting takes a while of its own
    time.sleep(chance.random() * longest)
    child.send_signal(signal.SIGKILL)
    rest = child.stdout.read().split()
    child.wait()
    made = int(rest[-1]) if rest else int(first or 0)
    told = subprocess.run([program, store], capture_output=True, text=True, env=environment(home)).stdout.splitlines()
    shutil.rmtree(home)
    if not told:
        return made, 0, 0, "none"
    state, edits, undone = told[0].split()
    return made, int(edits), int(undone), state


def sessions(options, program, top, count, pause, longest):
    wrong, lost_most = 0, 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        def one(number):
            return session(program, top, f"{pause}-{number}", pause, longest, random.Random(f"{options.seed} {number}"))
        for made, edits, undone, state in pool.map(one, range(count)):
            lost_most = max(lost_most, made - edits)
            good = state != "damaged" and made - edits <= 1 and (state == "none" or undone == min(edits, LEVELS))
            if not good:
                print(f"  {made} edits, {edits} came back, {undone} of them can be undone ({state})")
            wrong += not good
    print(f"{count} sessions with an edit every {pause} ms killed: {wrong} wrong, at most {lost_most} edits lost")
    return wrong


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("bin")
    parser.add_argument("--saves", type=int, default=0)
    parser.add_argument("--sessions", type=int, default=0)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    folder = pathlib.Path(options.bin).resolve()
    top = pathlib.Path(tempfile.mkdtemp(prefix="kill-runs-"))
    wrong = 0
    try:
        (top / "a.png").write_bytes(pictures.png(96, 64, 1))
        if options.sessions:
            wrong += sessions(options, folder / "edit_session", top, options.sessions, 5, 1)
        if options.saves:
            wrong += saves(options, folder / "vellum", top)
    finally:
        shutil.rmtree(top, ignore_errors=True)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
