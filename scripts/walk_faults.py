#!/usr/bin/env python3
"""Lets one call to the system after the other fail in what `vellum` does, and looks what is left.

    walk_faults.py BIN FAULTS [--every N] [--sample N] [--only NAME] [--seconds S]

BIN is the folder of the programs, FAULTS the library of tests/faults. For each command and each kind of call (open,
read, write, fsync, rename, close, mmap, malloc) the command runs once for each call that it makes, and that call fails;
writes also with all behind it, as on a full disk. Behind each run there must be the old or the new file, whole, and
nothing beside it; where the command failed it must have said so, and it may not have been ended by a signal.

Then the loss of power: what each command does to files is written down, and each state is made that a disk may have been
left in at any moment (data that were not synced are lost, or half of them; names that were changed since the folder was
synced are as before or as then). In each of them the file must be the old or the new one.

--every N takes each Nth call of memory (the others always each); --sample N takes N calls of each kind, evenly; --seconds S
ends after so long.
"""
import argparse
import concurrent.futures
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "tests" / "faults"))
import pictures  # noqa: E402

KINDS = ["open", "read", "write", "fsync", "rename", "close", "mmap", "malloc"]
# A person whose name can't be found isn't named in the file, which is none of the faults that are looked for.
QUIET = ["--set", "AutoUpdateTime=0", "--set", "IdentifyFiles=0"]

# Text is laid out, threads are started and movies are packed by libraries that end the program where memory is exhausted. The
# files must be whole all the same.
ENDED_BY_LIBRARIES = {"pdf", "recovery", "mp4", "webm"}

# name, arguments (IN: an animation, OUT: the target), name of the target
COMMANDS = [
    ("save", ["save", "IN", "OUT"], "t.png"),
    ("save-backup", ["--set", "CreateBackups=1", "save", "IN", "OUT"], "t.png"),
    ("convert-mng", ["convert", "IN", "OUT", "--kind", "mng"], "t.mng"),
    ("convert-webp", ["convert", "IN", "OUT", "--kind", "webp"], "t.webp"),
    ("build", ["build", "PICTURE", "PICTURE", "-o", "OUT"], "t.png"),
    ("repair", ["repair", "BROKEN", "OUT"], "t.png"),
    ("config", ["config", "set", "UndoLevels", "7"], "Vellumcraft 15.ini"),
    ("gif", ["gif", "IN", "OUT"], "t.gif"),
    ("ani", ["ani", "IN", "OUT"], "t.ani"),
    ("gif-optimized", ["gif", "--optimize", "IN", "OUT"], "t.gif"),
    ("cur", ["cur", "PICTURE", "OUT"], "t.cur"),
    ("mp4", ["movie", "IN", "OUT"], "t.mp4"),
    ("webm", ["movie", "IN", "OUT"], "t.webm"),
    ("swf", ["swf", "IN", "OUT"], "t.swf"),
    ("ilg", ["ilg", "IN", "OUT"], "t.html"),
    ("pdf", ["print", "IN", "OUT"], "t.pdf"),
    ("batch", ["batch", "reverse", "IN", "--dest", "FOLDER", "--prefix", "t_", "--overwrite", "silently"], "t_in.png"),
    ("recovery", None, "t.copy"),
]


class Walk:
    def __init__(self, options):
        self.bin = pathlib.Path(options.bin).resolve()
        self.library = str(pathlib.Path(options.library).resolve())
        self.top = pathlib.Path(tempfile.mkdtemp(prefix="walk-faults-"))
        self.until = time.monotonic() + options.seconds if options.seconds else None
        (self.top / "a.png").write_bytes(pictures.png(96, 64, 1))
        (self.top / "b.png").write_bytes(pictures.png(96, 64, 2))
        self.plain(["build", "a.png", "b.png", "-o", "in.png"])
        whole = (self.top / "in.png").read_bytes()
        (self.top / "broken.png").write_bytes(whole[:-30])

    def environment(self, home, **more):
        env = {k: v for k, v in os.environ.items() if not k.startswith("VELLUM_FAULT")}
        env.update(XDG_CONFIG_HOME=str(home), XDG_STATE_HOME=str(home), SOURCE_DATE_EPOCH="1000000000", **more)
        return env

    def plain(self, arguments):
        subprocess.run([self.bin / "vellum", *arguments], cwd=self.top, check=True, capture_output=True,
                       env=self.environment(self.top / "home"))

    def folder(self, command):
        """A folder as it stands before the command: the old file alone, by the name of its target."""
        folder = pathlib.Path(tempfile.mkdtemp(dir=self.top))
        _, arguments, target = command
        if arguments and arguments[0] == "config":
            (folder / "Tarnwick").mkdir()
            (folder / "Tarnwick" / target).write_bytes(b"[Vellumcraft]\nUndoLevels = 5\n")
        else:
            (folder / target).write_bytes(b"old content\n" * 100)
        if keeps_backup(command):
            (folder / backup_of(command)).write_bytes(b"older content\n")
        return folder

    def run(self, command, folder, **fault):
        _, arguments, target = command
        home = folder if arguments and arguments[0] == "config" else self.top / "home"
        names = {"IN": self.top / "in.png", "PICTURE": self.top / "a.png", "BROKEN": self.top / "broken.png",
                 "OUT": folder / target, "FOLDER": folder}
        if arguments is None:
            line = [self.bin / "write_recovery_copy", self.top / "in.png", folder / target]
        else:
            line = [self.bin / "vellum", *QUIET, *[names.get(word, word) for word in arguments]]
        return subprocess.run(line, cwd=self.top, capture_output=True, timeout=120, stdin=subprocess.DEVNULL,
                              env=self.environment(home, LD_PRELOAD=self.library, **fault))

    def content(self, folder):
        """Name to bytes of all that stands in the folder; without what changes with the clock."""
        found = {}
        for path in sorted(folder.rglob("*")):
            if path.is_file():
                found[str(path.relative_to(folder))] = timeless(path.read_bytes())
        return found

    def reference(self, command):
        """What the command makes when nothing fails, and how often it calls each kind."""
        counts = self.top / "counts"
        folder = self.folder(command)
        old = self.content(folder)
        done = self.run(command, folder, VELLUM_FAULT_COUNTS=str(counts))
        if done.returncode != 0:
            return None
        new = self.content(folder)
        calls = dict(line.split() for line in counts.read_text().splitlines())
        shutil.rmtree(folder)
        return old, new, {kind: int(calls[kind]) for kind in KINDS}

    def fault(self, command, old, new, fault):
        """A sentence on what is wrong behind a fault; None where nothing is."""
        folder = self.folder(command)
        try:
            done = self.run(command, folder, VELLUM_FAULT=fault)
            found = self.content(folder)
            # Pictures that can't be read may be passed over, which is told.
            whole = done.returncode == 0 and self.is_whole(folder / path_of(command))
        except subprocess.TimeoutExpired:
            # The library that finds fonts may wait for a lock of its own.
            by_library = command[0] == "pdf" and fault.startswith("malloc")
            return None if by_library and self.content(folder) == old else "does not end"
        finally:
            shutil.rmtree(folder, ignore_errors=True)
        by_library = command[0] in ENDED_BY_LIBRARIES or b"Fatal glibc error" in done.stderr
        if done.returncode < 0 and not (by_library and fault.startswith("malloc")):
            return f"ended by signal {-done.returncode}: {done.stderr[-200:]!r}"
        if done.returncode > 0 and not done.stderr.strip() and not (by_library and fault.startswith("malloc")):
            return f"failed with {done.returncode} and said nothing"
        target = path_of(command)
        if target not in found:
            return "the file is gone"
        if keeps_backup(command) and found.get(backup_of(command)) not in (old[backup_of(command)], old[target]):
            return "the backup is gone or damaged"
        if done.returncode == 0 and found[target] != new[target]:
            # A still that can't be opened as a document is read as a picture, which is stored in another way.
            # Where a font can't be read another one is taken, and where a thread can't be had a codec packs differently.
            told = done.stderr.strip() or command[0] in ("build", "pdf", "mp4", "webm")
            return None if told and whole else "ended well without the new file"
        if found[target] not in (old[target], new[target]):
            return f"the file is neither the old nor the new one ({len(found[target])} bytes)"
        for name in found.keys() - old.keys() if done.returncode >= 0 else ():
            if found[name] != new.get(name):
                return f"{name} is left"
        return None

    def is_whole(self, path):
        if path.suffix == ".pdf":
            content = path.read_bytes()
            return content.startswith(b"%PDF") and content.rstrip().endswith(b"%%EOF")
        look = "movie-info" if path.suffix in (".mp4", ".webm") else "check"
        return subprocess.run([self.bin / "vellum", look, path], capture_output=True,
                              env=self.environment(self.top / "home")).returncode == 0

    # --- the loss of power ---

    def trace(self, command):
        folder = self.folder(command)
        old = self.content(folder)
        trace = self.top / "trace"
        trace.unlink(missing_ok=True)
        done = self.run(command, folder, VELLUM_FAULT_TRACE=str(trace), VELLUM_FAULT_FOLDER=str(folder))
        new = self.content(folder)
        raw = {str(p.relative_to(folder)): p.read_bytes() for p in folder.rglob("*") if p.is_file()}
        shutil.rmtree(folder)
        steps = [line.rstrip("\n").split("\t") for line in trace.read_text().splitlines()]
        return old, new, raw, steps if done.returncode == 0 else None


def path_of(command):
    """Of the target, below its folder."""
    return f"Tarnwick/{command[2]}" if command[0] == "config" else command[2]


def keeps_backup(command):
    return command[0] in ("config", "save-backup")


def backup_of(command):
    path = pathlib.PurePath(path_of(command))
    return str(path.with_name(f"Backup of {path.name}"))


def timeless(data):
    """Without the line of a configuration that tells when it was written."""
    return b"\n".join(line for line in data.split(b"\n") if not line.startswith(b";Last updated"))


class Disk:
    """Files as a disk may hold them: `names` point to contents; of a content `synced` is sure."""

    def __init__(self, old):
        self.contents = [{"now": bytearray(data), "synced": bytes(data)} for data in old.values()]
        self.names = {name: i for i, name in enumerate(old)}
        self.sure = dict(self.names)  # as the folder was synced last
        self.changes = []  # states of `names` since then

    def step(self, what, path, more=(), data=b""):
        if path.endswith(" (deleted)"):  # a file that never had a name
            return
        if what == "create":
            self.contents.append({"now": bytearray(), "synced": b""})
            self.names[path] = len(self.contents) - 1
        elif what == "truncate":
            self.contents[self.names[path]]["now"] = bytearray()
        elif what == "write":
            now, at = self.contents[self.names[path]]["now"], int(more)
            now.extend(bytes(max(0, at - len(now))))
            now[at:at + len(data)] = data
        elif what == "sync" and path in self.names:
            content = self.contents[self.names[path]]
            content["synced"] = bytes(content["now"])
            return
        elif what == "sync":  # a folder
            self.sure, self.changes = dict(self.names), []
            return
        elif what == "rename":
            self.names[more] = self.names.pop(path)
        elif what == "unlink":
            self.names.pop(path, None)
        if what in ("create", "rename", "unlink"):
            self.changes.append(dict(self.names))

    def states(self, name):
        """What may stand under the name after the power went."""
        for names in [self.sure, *self.changes]:
            if name not in names:
                yield None
                continue
            content = self.contents[names[name]]
            yield content["synced"]
            yield bytes(content["now"])
            yield bytes(content["now"][:len(content["now"]) // 2]) if content["now"] != content["synced"] \
                else content["synced"]


def power_losses(walk, command):
    """Moments that were looked at, and what is wrong in the first bad one."""
    old, new, raw, steps = walk.trace(command)
    if steps is None:
        return 0, "the command fails"
    target = path_of(command)
    first = walk.folder(command)
    disk = Disk({str(p.relative_to(first)): p.read_bytes() for p in first.rglob("*") if p.is_file()})
    shutil.rmtree(first)
    moments = 0
    for number, step in enumerate([["begin", ""], *steps]):
        if step[0] != "begin":
            data = bytes.fromhex(step[3]) if step[0] == "write" else b""
            disk.step(step[0], step[1], step[2] if len(step) > 2 else "", data)
        for state in disk.states(target):
            moments += 1
            if state is None:
                return moments, f"behind step {number} ({step[0]}) the file may be gone"
            if timeless(state) != old[target] and timeless(state) != new[target]:
                return moments, f"behind step {number} ({step[0]}) the file may be neither ({len(state)} bytes)"
        for state in disk.states(backup_of(command)) if keeps_backup(command) else ():
            moments += 1
            if state is None or timeless(state) not in (old[backup_of(command)], old[target]):
                return moments, f"behind step {number} ({step[0]}) the backup may be gone or damaged"
    if raw[target] != bytes(disk.contents[disk.names[target]]["now"]):
        return moments, "the trace does not hold all writes"
    return moments, None


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("bin")
    parser.add_argument("library")
    parser.add_argument("--every", type=int, default=1)
    parser.add_argument("--sample", type=int, default=0)
    parser.add_argument("--only", action="append", default=[])
    parser.add_argument("--seconds", type=float, default=0)
    options = parser.parse_args()
    walk = Walk(options)
    bad = 0
    print(f"{'command':14}" + "".join(f"{kind:>8}" for kind in KINDS) + f"{'disk full':>11}{'power':>8}  found")
    try:
        for command in COMMANDS:
            if options.only and command[0] not in options.only:
                continue
            bad += walk_command(walk, command, options)
    finally:
        shutil.rmtree(walk.top, ignore_errors=True)
    return 1 if bad else 0


def kind_of(fault):
    return "full" if fault.endswith("+") else fault.split(":")[0]


def evenly(faults, count):
    return [faults[i * len(faults) // count] for i in range(min(count, len(faults)))]


def walk_command(walk, command, options):
    reference = walk.reference(command)
    if reference is None:
        print(f"{command[0]:14}  is not there or fails by itself")
        return 0 if command[0] in ("mp4", "webm") else 1
    old, new, counts = reference
    if walk.reference(command)[1] != new:
        print(f"{command[0]:14}  makes another file each time")
        return 1
    faults = []
    for kind in KINDS:
        step = options.every if kind == "malloc" else 1
        faults += [f"{kind}:{n}" for n in range(1, counts[kind] + 1, step)]
    faults += [f"write:{n}+" for n in range(1, counts["write"] + 1)]
    if options.sample:
        faults = [fault for kind in KINDS + ["full"] for fault in evenly([f for f in faults if kind_of(f) == kind],
                                                                         options.sample)]
    walked, bad = {}, []
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        def one(fault):
            if walk.until and time.monotonic() > walk.until:
                return fault, "left out"
            return fault, walk.fault(command, old, new, fault)
        for fault, wrong in pool.map(one, faults):
            if wrong == "left out":
                continue
            kind = kind_of(fault)
            walked[kind] = walked.get(kind, 0) + 1
            if wrong:
                bad.append(f"{fault}: {wrong}")
    moments, lost = power_losses(walk, command)
    if lost:
        bad.append(f"power: {lost}")
    print(f"{command[0]:14}" + "".join(f"{walked.get(kind, 0):8}" for kind in KINDS) +
          f"{walked.get('full', 0):11}{moments:8}  {len(bad) or 'nothing'}", flush=True)
    for line in bad[:12]:
        print("    " + line)
    return len(bad)


if __name__ == "__main__":
    sys.exit(main())
