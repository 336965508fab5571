#!/usr/bin/env python3
"""Fails if a folder includes a header of another folder that it must not use, or if there is a cycle."""
import graphlib
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent

INSIDE = ["src/sdk", "src/platform", "src/command", "src/support", "src/host", "src/pixelbender", "src/gpu",
          "src/engine", "src/view", "hostkit", "pbhost"]
# Folder -> the folders of this project that it may include besides itself.
MAY_INCLUDE = {
    "src/sdk": [],
    "src/platform": [],
    "src/windows": ["src/platform"],  # replaces it on Windows, with the same names
    "src/command": ["src/sdk"],
    "src/support": ["src/sdk", "src/platform", "src/command"],
    "src/host": ["src/sdk", "src/command", "src/support"],
    "src/pixelbender": ["src/support"],
    "src/gpu": ["src/platform", "src/support"],
    "src/engine": ["src/pixelbender", "src/gpu", "src/support"],
    "src/shell": ["src/sdk", "src/platform", "src/command", "src/support", "src/host", "src/pixelbender",
                  "src/gpu", "src/engine"],
    "src/pipl": ["src/sdk", "src/shell"],  # a build tool; the content of the resource is defined in shell
    "src/view": ["src/host", "src/command", "src/support", "src/sdk"],
    "hostkit": ["src/sdk"],
    # The text commands use the models and the generator, the camera command uses the view, `check`
    # compiles on the device; none renders by itself.
    "pbhost": ["hostkit", "src/command", "src/support", "src/pixelbender", "src/engine", "src/gpu",
               "src/view"],
    # Tests of the module load it from its file and include nothing of src/shell.
    "tests": INSIDE + ["bench"],
    "bench": INSIDE,
    "fuzz": INSIDE,
}
# (including folder, included folder) -> the only files that may be included.
ONLY_FILES = {
    ("pbhost", "src/engine"): {"engine/program/glsl_generator.h", "engine/pixels/channel_order.h",
                               "engine/program/varying_count.h"},
    ("pbhost", "src/gpu"): {"gpu/device.h", "gpu/features.h", "gpu/gl_names.h"},
    ("pbhost", "src/view"): {"view/composition_camera.h"},
}
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"')


def folder_of(path: pathlib.Path) -> str:
    parts = path.relative_to(ROOT).parts
    return "/".join(parts[:2]) if parts[0] == "src" else parts[0]


def find_target(include: str):
    for base in (ROOT / "src", ROOT):
        if (base / include).is_file():
            return base / include
    return None


def faults_in(path: pathlib.Path):
    folder = folder_of(path)
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        match = INCLUDE.match(line)
        if not match:
            continue
        include = match.group(1)
        where = f"{path.relative_to(ROOT)}:{number}: "
        target = find_target(include)
        if target is None:
            yield where + f'"{include}" is not found from the roots'
            continue
        other = folder_of(target)
        if other != folder and other not in MAY_INCLUDE[folder]:
            yield where + f"{folder} may not include {other}"
        elif include not in ONLY_FILES.get((folder, other), {include}):
            yield where + f"{folder} may not include {include}"


def cycle() -> list:
    """A message if the table has a cycle; otherwise nothing."""
    try:
        graphlib.TopologicalSorter(MAY_INCLUDE).prepare()
    except graphlib.CycleError as error:
        return ["MAY_INCLUDE has a cycle: " + " -> ".join(error.args[1])]
    return []


def main() -> int:
    files = [
        path
        for folder in MAY_INCLUDE
        for path in sorted((ROOT / folder).rglob("*"))
        if path.suffix in (".h", ".cpp")
    ]
    faults = cycle() + [fault for path in files for fault in faults_in(path)]
    print("\n".join(faults) if faults else f"{len(files)} files, every include is allowed")
    return 1 if faults or not files else 0


if __name__ == "__main__":
    sys.exit(main())
