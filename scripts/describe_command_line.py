#!/usr/bin/env python3
"""Generates pbhost's manual page or its bash completion from the output of --help.

    describe_command_line.py man PBHOST > pbhost.1
    describe_command_line.py bash PBHOST > pbhost
"""
import re
import subprocess
import sys

OPTION = re.compile(r"^  ((?:-\w,)?--[\w-]+|-\w)((?: \S+)*?)(?: {2,}|$)(.*)$")
ROW = re.compile(r"^  (\S.*?) {2,}(\S.*)$")


class Command:
    """One command's help: title, usage, its options (names, argument, text), the other rows, the commands below it."""

    def __init__(self, program: str, words):
        self.words = words
        text = subprocess.run([program, *words, "--help"], check=True, capture_output=True, text=True).stdout
        lines = text.splitlines()
        self.title, self.usage = lines[0], lines[1].removeprefix("Usage: ")
        self.sections, self.footer, self.options = {}, [], []
        section = None
        for line in lines[2:]:
            if re.fullmatch(r"[A-Z]\w+:", line):
                section = line[:-1]
                self.sections[section] = []
            elif line.startswith("  ") and section:
                self.add(section, line)
            elif line:
                section = None
                self.footer.append(line)
        below = [name for name, _ in self.sections.get("Subcommands", [])]
        self.commands = [Command(program, [*words, name]) for name in below]

    def add(self, section: str, line: str):
        option, row = OPTION.match(line), ROW.match(line)
        if section == "Options" and option:
            self.options.append((option[1].split(","), option[2].strip(), option[3]))
        elif row:
            self.sections[section].append((row[1], row[2]))

    def all(self):
        yield self
        for command in self.commands:
            yield from command.all()


def roff(text: str) -> str:
    text = text.replace("\\", "\\\\").replace("-", "\\-")
    return "\\&" + text if text.startswith((".", "'")) else text


def item(term: str, text: str) -> str:
    return f".TP\n{term}\n{roff(text)}"


def describe(command: Command):
    yield f".SS \"{' '.join(command.words)}\"" if command.words else ".SH OPTIONS"
    if command.words:
        yield roff(command.title) + ".\n.PP\n\\fB" + roff(command.usage) + "\\fR"
    for name, text in command.sections.get("Positionals", []):
        yield item(f"\\fI{roff(name.split()[0])}\\fR", text)
    for names, argument, text in command.options:
        if "--help" in names and command.words:
            continue
        term = ", ".join(f"\\fB{roff(name)}\\fR" for name in names)
        yield item(term + (f" \\fI{roff(argument)}\\fR" if argument else ""), text)


def manual(program: str) -> str:
    top = Command(program, [])
    version = subprocess.run([program, "--version"], check=True, capture_output=True, text=True).stdout.strip()
    lines = [
        f'.TH PBHOST 1 "" "{version}" "User Commands"',
        ".SH NAME", "pbhost \\- apply Pixel Bender kernels and graphs to pictures",
        ".SH SYNOPSIS", "\\fBpbhost\\fR \\fICOMMAND\\fR [\\fIOPTIONS\\fR]",
        ".SH DESCRIPTION", roff(top.title),
        *describe(top),
        ".SH COMMANDS",
    ]
    for command in list(top.all())[1:]:
        lines.extend(describe(command))
    lines += [".SH NOTES"]
    for line in top.footer:
        lines += [roff(line), ".PP"]
    return "\n".join(lines) + "\n"


def completion(program: str) -> str:
    top = Command(program, [])
    cases = []
    for command in top.all():
        words = [name for names, _, _ in command.options for name in names if name.startswith("--")]
        words += [" ".join(below.words[-1:]) for below in command.commands]
        cases.append(f"    '{' '.join(command.words)}') words='{' '.join(words)}' ;;")
    return f"""# bash completion for pbhost: commands, their options, and files
_pbhost() {{
    local current=${{COMP_WORDS[COMP_CWORD]}} command= word words=
    for word in "${{COMP_WORDS[@]:1:COMP_CWORD-1}}"; do
        [[ $word == -* ]] && break
        [[ " {' '.join(' '.join(c.words) for c in top.all() if c.words)} " == *" $word "* ]] || break
        command+=${{command:+ }}$word
    done
    case $command in
{chr(10).join(cases)}
    esac
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current"; [[ $current == -* ]] || compgen -f -- "$current")
}}
complete -o filenames -F _pbhost pbhost
"""


if __name__ == "__main__":
    if len(sys.argv) != 3 or sys.argv[1] not in ("man", "bash"):
        sys.exit(__doc__)
    sys.stdout.write({"man": manual, "bash": completion}[sys.argv[1]](sys.argv[2]))
