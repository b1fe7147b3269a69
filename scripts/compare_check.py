#!/usr/bin/env python3
"""What `vellum check` names beside pngcheck and webpinfo, over folders of files.

    compare_check.py VELLUM FOLDER...

A line for each folder: files; those that the judge objects to; of these, those in which vellum finds errors, or at least something;
those that only vellum finds errors in. The last lines name the files that only the judge objects to.
"""
import concurrent.futures
import json
import os
import pathlib
import subprocess
import sys


def judged(path):
    """Whether the judge of this kind of file objects to it."""
    tool = ["webpinfo"] if path.suffix == ".webp" else ["pngcheck", "-q"]
    ran = subprocess.run([*tool, path], capture_output=True, text=True, errors="replace")
    return "error" in (ran.stdout + ran.stderr).replace("No error detected", "").lower()


def found(program, path):
    """The severities of what vellum finds."""
    ran = subprocess.run([program, "check", "--json", path], capture_output=True, text=True)
    return [finding["severity"] for finding in json.loads(ran.stdout)[0]["findings"]]


def compare(program, path):
    return path, judged(path), found(program, path)


def main():
    program, *folders = sys.argv[1:]
    missed = []
    print(f"{'folder':12} {'files':>6} {'judge':>6} {'errors':>7} {'any':>5} {'only vellum':>12}")
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for folder in map(pathlib.Path, folders):
            files = sorted(path for path in folder.rglob("*") if path.suffix in (".png", ".apng", ".mng", ".jng", ".webp"))
            rows = list(pool.map(lambda path: compare(program, path), files))
            bad = [(path, what) for path, judge, what in rows if judge]
            errors = [path for path, what in bad if "error" in what]
            known = [path for path, what in bad if what]
            alone = [path for path, judge, what in rows if not judge and "error" in what]
            missed += [path for path, what in bad if not what]
            print(f"{folder.name:12} {len(rows):6} {len(bad):6} {len(errors):7} {len(known):5} {len(alone):12}")
    for path in missed:
        print("only the judge objects to", path)
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main())
