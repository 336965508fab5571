#!/usr/bin/env python3
"""Renders the same kernels and graphs with the modules of two platforms and compares the results.

usage: compare.py OUT HERE THERE FILE...

HERE and THERE are the program render_all and the module to load, separated by a comma; the program
may be a command with arguments. Each platform renders all files; then each opens the flat blocks
that the other has written. The shader texts passed to the OpenGL driver must be identical; pixels
may differ by one step at 8 bits.
"""
import array
import os
import pathlib
import shlex
import shutil
import subprocess
import sys

# By extension: Python's format of a channel, and the value of one 8-bit step.
DEPTHS = {".8": ("B", 1), ".16": ("H", 32768 / 255), ".32": ("f", 1 / 255)}


def run(platform: str, out: pathlib.Path, blocks: str, files: list):
    """Renders; the driver itself writes down the texts of each program that it links."""
    shutil.rmtree(out, ignore_errors=True)
    (out / "shaders").mkdir(parents=True)
    program, module = platform.split(",")
    environment = dict(os.environ, MESA_SHADER_CAPTURE_PATH=str(out / "shaders"),
                       MESA_SHADER_CACHE_DISABLE="true")
    subprocess.run(shlex.split(program) + [module, str(out), blocks] + files, check=True,
                   env=environment)


def contents(folder: pathlib.Path, pattern: str) -> dict:
    return {path.name: path.read_bytes() for path in sorted(folder.glob(pattern))}


def pixel_faults(name: str, here: bytes, there: bytes):
    code, step = DEPTHS[pathlib.Path(name).suffix]
    ours, theirs = array.array(code, here), array.array(code, there)
    if len(ours) != len(theirs) or not ours:
        yield f"{name}: {len(ours)} channels here, {len(theirs)} there"
        return
    if code != "B" and len(set(ours)) < 8:
        yield f"{name}: nothing to compare, only {len(set(ours))} different values"
    # A NaN equals only a NaN.
    worst = max((abs(a - b) if a == a and b == b else float("inf") if (a == a) != (b == b) else 0
                 for a, b in zip(ours, theirs)))
    if worst > step * 1.001:
        yield f"{name}: the pixels differ by {worst / step} steps"


def faults(here: pathlib.Path, there: pathlib.Path, names: list):
    texts = [sorted(contents(folder / "shaders", "*").values()) for folder in (here, there)]
    if texts[0] != texts[1] or not texts[0]:
        yield f"{here} and {there}: {len(texts[0])} and {len(texts[1])} shader texts, not the same"
    for name in names:
        for depth in DEPTHS:
            yield from pixel_faults(name + depth, (here / (name + depth)).read_bytes(),
                                    (there / (name + depth)).read_bytes())


def main(out: pathlib.Path, here: str, there: str, files: list) -> int:
    names = [pathlib.Path(file).name for file in files]
    new = {"here": here, "there": there}
    for side, platform in new.items():
        run(platform, out / side, "-", files)
    run(here, out / "here-from-there", str(out / "there"), files)
    run(there, out / "there-from-here", str(out / "here"), files)
    found = [fault for other in ("there", "here-from-there", "there-from-here")
             for fault in faults(out / "here", out / other, names)]
    print("\n".join(found) if found else
          f"{len(names)} files, {len(contents(out / 'here' / 'shaders', '*'))} programs: the same")
    return 1 if found or not names else 0


if __name__ == "__main__":
    if len(sys.argv) < 5:
        sys.exit(__doc__)
    sys.exit(main(pathlib.Path(sys.argv[1]), sys.argv[2], sys.argv[3], sys.argv[4:]))
