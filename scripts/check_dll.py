#!/usr/bin/env python3
"""Fails unless a Windows host can load the module: it has one export and imports only system libraries.

usage: check_dll.py OBJDUMP MODULE
"""
import re
import subprocess
import sys

EXPORTS = ["EntryPointFunc"]
SYSTEM = {"KERNEL32.dll", "USER32.dll", "GDI32.dll", "OPENGL32.dll", "GLU32.dll", "msvcrt.dll"}


def main(objdump: str, module: str) -> int:
    shown = subprocess.run([objdump, "-p", module], check=True, capture_output=True, text=True).stdout
    name_table = shown.partition("[Ordinal/Name Pointer] Table")[2].partition("\n\n")[0]
    exports = re.findall(r"^\s*\[\s*\d+\]\s+(?:\+base\[\s*\d+\]\s+\w+\s+)?(\S+)$", name_table, re.M)
    imports = set(re.findall(r"DLL Name: (\S+)", shown))
    others = {name for name in imports if name.lower() not in {name.lower() for name in SYSTEM}}
    print(f"{module}: exports {exports}, imports {sorted(imports)}")
    if exports != EXPORTS:
        print(f"the exports must be {EXPORTS}")
    if others:
        print(f"not of the system: {sorted(others)}")
    return 0 if exports == EXPORTS and imports and not others else 1


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
