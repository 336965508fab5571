#!/usr/bin/env python3
"""Fails on an #include that crosses rooms in a direction that the house does not have."""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent

# Room -> the rooms of ours that it may include besides itself.
MAY_INCLUDE = {
    "src/sdk": [],
    "src/platform": [],
    "src/windows": ["src/platform"],  # stands in its place, under the same names
    "src/support": ["src/sdk", "src/platform", "src/host"],
    "src/host": ["src/sdk", "src/support"],
    "src/pixelbender": ["src/support"],
    "src/gpu": ["src/platform", "src/support"],
    "src/engine": ["src/pixelbender", "src/gpu", "src/support"],
    "src/view": ["src/host", "src/support", "src/sdk"],
    "hostkit": ["src/sdk"],
    # Its verbs that show text read the models and make the GLSL, one shows the camera; it renders
    # nothing.
    "pbhost": ["hostkit", "src/host", "src/support", "src/pixelbender", "src/engine", "src/gpu",
               "src/view"],
}
# Of some rooms others see a part and nothing else: of `host` the frame of the running command, of
# the engine the generator.
ONLY_FILES = {
    ("src/support", "src/host"): {"host/command_scope.h"},
    ("pbhost", "src/host"): {"host/command_scope.h"},
    ("pbhost", "src/engine"): {"engine/glsl_generator.h", "engine/channel_order.h"},
    ("pbhost", "src/gpu"): {"gpu/device.h"},
    ("pbhost", "src/view"): {"view/composition_camera.h"},
}
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"')


def room_of(path: pathlib.Path) -> str:
    parts = path.relative_to(ROOT).parts
    return "/".join(parts[:2]) if parts[0] == "src" else parts[0]


def find_target(include: str):
    for base in (ROOT / "src", ROOT):
        if (base / include).is_file():
            return base / include
    return None


def faults_in(path: pathlib.Path):
    room = room_of(path)
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
        other = room_of(target)
        if other != room and other not in MAY_INCLUDE[room]:
            yield where + f"{room} may not include {other}"
        elif include not in ONLY_FILES.get((room, other), {include}):
            yield where + f"{room} may not include {include}"


def main() -> int:
    files = [
        path
        for room in MAY_INCLUDE
        for path in sorted((ROOT / room).rglob("*"))
        if path.suffix in (".h", ".cpp")
    ]
    faults = [fault for path in files for fault in faults_in(path)]
    print("\n".join(faults) if faults else f"{len(files)} files, no arrow that is not in the house")
    return 1 if faults or not files else 0


if __name__ == "__main__":
    sys.exit(main())
