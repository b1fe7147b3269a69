#!/usr/bin/env python3
"""Kills programs at random moments and looks what is left.

    kill_runs.py BIN [--saves N] [--sessions N] [--windows N] [--seed S]

Saves: `vellum save` over a file that is there, killed somewhere between its start and its end. Behind each there must be
the old or the new file; what else is left is counted, and must be gone behind the next save.

Sessions (need the target edit_session of the tests): a document is edited without an end, a copy for recovery follows each edit,
and the program is killed. The copy must have all edits but the last one, and Undo must take them back.

Windows (need edit_session, Xvfb and xdotool): the desktop on an X server of its own, a text pasted with the keyboard every so
often. The copy must have what was pasted 5 s in front of a rest or 20 s in front of the end, and Undo must take it back.
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
import threading
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "tests" / "faults"))
import pictures  # noqa: E402

LEVELS = 10  # UndoLevels as it comes
REST, LONGEST = 5, 20  # seconds until a copy follows an edit: of rest, and at most


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
            return killed_save(program, top, number, old, 2 * seconds, random.Random(f"{options.seed} {number}"))
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


class Screen:
    """An X server of its own, and the keys of the one window on it."""

    starting = threading.Lock()  # servers that start at once take the same number

    def __init__(self):
        with Screen.starting:
            self.start()

    def start(self):
        reader, writer = os.pipe()
        self.server = subprocess.Popen(["Xvfb", "-displayfd", str(writer), "-screen", "0", "800x600x24", "-noreset"],
                                       pass_fds=[writer], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(writer)
        with os.fdopen(reader) as told:
            self.name = f":{told.readline().strip()}"

    def tell(self, *words):
        return subprocess.run(["xdotool", *words], capture_output=True, text=True, env=dict(os.environ, DISPLAY=self.name)).stdout

    def window(self, title):
        for _ in range(200):
            found = self.tell("search", "--onlyvisible", "--name", title).split()
            if found:
                return found[-1]
            time.sleep(0.1)
        raise RuntimeError(f"no window of {title}")

    def close(self):
        self.server.terminate()
        self.server.wait()


def window_session(folder, top, number, chance):
    """When each text was pasted and when the program was killed; then edits that came back and that Undo took back."""
    home = top / f"window{number}"
    home.mkdir()
    shutil.copy(top / "text.png", home / "t.png")
    screen = Screen()
    child = subprocess.Popen([folder / "vellumcraft", "--set", "StartMaximized=0", home / "t.png"], stdout=subprocess.DEVNULL,
                             stderr=subprocess.DEVNULL, env=dict(environment(home), DISPLAY=screen.name, HOME=str(home)))
    pasted = []
    try:
        screen.tell("windowfocus", "--sync", screen.window("t.png.*Vellumcraft"))
        time.sleep(0.5)
        for key in ("Home", "Down", "ctrl+c"):  # the text stands behind the header
            screen.tell("key", key)
            time.sleep(0.3)
        ends = time.monotonic() + chance.uniform(1, 40)
        while True:
            wait = chance.choice((0.3, 1, 3, 7))
            if time.monotonic() + wait >= ends:
                break
            time.sleep(wait)
            screen.tell("key", "ctrl+v")
            pasted.append(time.monotonic())
        time.sleep(max(ends - time.monotonic(), 0))
    finally:
        child.send_signal(signal.SIGKILL)
        killed = time.monotonic()
        child.wait()
        screen.close()
    told = subprocess.run([folder / "edit_session", home / "Tarnwick" / "recovery"], capture_output=True, text=True,
                          env=environment(home)).stdout.splitlines()
    shutil.rmtree(home)
    state, texts, undone = told[0].split() if told else ("none", 1, 0)
    return pasted, killed, int(texts) - 1, int(undone), state


def due_edits(pasted, killed):
    """How many edits a copy must have: a rest or the longest time has passed behind them, and half a second for the writing."""
    due = 0
    for number, at in enumerate(pasted, 1):
        rested = any(after - before >= REST + 0.5 and before >= at
                     for before, after in zip(pasted, [*pasted[1:], killed]))
        if rested or killed - at >= LONGEST + 0.5:
            due = number
    return due


def windows(options, folder, top):
    subprocess.run([folder / "vellum", "edit", top / "a.png", top / "text.png", "--insert", "tEXt@1:Edit=0"], check=True,
                   env=environment(top))
    wrong, edits, lost_most = 0, 0, 0
    with concurrent.futures.ThreadPoolExecutor(2 * os.cpu_count()) as pool:
        def one(number):
            return window_session(folder, top, number, random.Random(f"{options.seed} window {number}"))
        for pasted, killed, back, undone, state in pool.map(one, range(options.windows)):
            due = due_edits(pasted, killed)
            edits += len(pasted)
            lost_most = max(lost_most, len(pasted) - back)
            good = state != "damaged" and due <= back <= len(pasted) and undone == min(back, LEVELS)
            if not good:
                print(f"  {len(pasted)} edits, {due} due, {back} came back, {undone} of them can be undone ({state})")
            wrong += not good
    print(f"{options.windows} windows with {edits} edits killed: {wrong} wrong, at most {lost_most} edits of the last "
          f"{LONGEST} s lost")
    return wrong


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("bin")
    parser.add_argument("--saves", type=int, default=0)
    parser.add_argument("--sessions", type=int, default=0)
    parser.add_argument("--windows", type=int, default=0)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    folder = pathlib.Path(options.bin).resolve()
    top = pathlib.Path(tempfile.mkdtemp(prefix="kill-runs-"))
    wrong = 0
    try:
        (top / "a.png").write_bytes(pictures.png(96, 64, 1))
        if options.sessions:
            wrong += sessions(options, folder / "edit_session", top, options.sessions, 5, 1)
        if options.windows:
            wrong += windows(options, folder, top)
        if options.saves:
            wrong += saves(options, folder / "vellum", top)
    finally:
        shutil.rmtree(top, ignore_errors=True)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
