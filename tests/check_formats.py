#!/usr/bin/env python3
"""Runs `pbhost check` in each format over a folder of files with and without faults, and validates what it
writes with tools that are made for the formats. Usage: check_formats.py PBHOST [SARIF_COMMAND...]

With a SARIF command, such as the multitool's, its report is validated by that, too."""
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

import jsonschema

FORMATS = pathlib.Path(__file__).resolve().parent / "formats"
PBHOST = os.path.abspath(sys.argv[1])
HEAD = '<languageVersion : 1.0;>\nkernel K < namespace : "n"; vendor : "v"; version : 1; >\n{\n'
BODY = "input image4 src; output pixel4 dst;\nvoid evaluatePixel() { dst = %s(src, outCoord()); }\n}\n"
FILES = {
    "good.pbk": HEAD + BODY % "sampleNearest",
    "sub folder/good.pbk": HEAD + BODY % "sampleNearest",
    # A name with characters that the formats must escape, the same fault twice, a character beyond
    # the basic plane in front of the fault.
    "sub folder/bad, 100%:\u00e9.pbk": HEAD + "// <&\"'>\n/* \U0001d11e */ float f() { return fooo; }\n"
    "float g() { return fooo; }\nfloat h() { return\tfooo; }\n" + BODY % "sampleNearest",
    "warn.pbk": HEAD + 'parameter float a < maxValue: 1.0; defaultVale : "<&>"; >;\n' + BODY % "sampleNearest",
    "empty.pbg": "<graph><a></b>",
    ".hidden/bad.pbk": "x",
    "notes.txt": "x",
}
ERRORS, WARNINGS = 4, 1


def check(*arguments, code=3):
    done = subprocess.run([PBHOST, "check", *arguments], capture_output=True, check=False)
    assert done.returncode == code, (arguments, done)
    return done.stdout.decode("utf-8"), done.stderr.decode("utf-8")


def validate(report, schema):
    jsonschema.Draft7Validator(json.loads((FORMATS / schema).read_text())).validate(report)


def test_gcc():
    out, err = check(".")
    places = re.findall(r"^(.+?):(\d+):(\d+): (error|warning): .* \[([a-z-]+)\]$", out, re.M)
    assert ("./sub folder/bad, 100%:\u00e9.pbk", "5", "31", "error", "compile-error") in places, out
    assert len([p for p in places if p[3] == "warning"]) == WARNINGS, out
    assert f"5 files checked: {ERRORS} errors, {WARNINGS} warning" in err, err
    marked = out.splitlines()[[i for i, line in enumerate(out.splitlines()) if "return\tfooo" in line][0] + 1]
    assert marked.endswith(" \t^~~~"), repr(marked)  # a tab stays a tab


def test_json():
    report = json.loads(check("--format", "json", ".")[0])
    validate(report, "json.schema.json")
    assert (report["errors"], report["warnings"]) == (ERRORS, WARNINGS), report
    assert [f["file"] for f in report["files"]][0] == "./empty.pbg"
    found = [d for f in report["files"] for d in f["diagnostics"]]
    assert len(found) == ERRORS + WARNINGS


def test_gitlab():
    report = json.loads(check("--format", "gitlab", ".")[0])
    validate(report, "gitlab.schema.json")
    assert len({entry["fingerprint"] for entry in report}) == len(report) == ERRORS + WARNINGS


def test_sarif(command):
    text = check("--format", "sarif", ".")[0]
    report = json.loads(text)
    validate(report, "sarif.schema.json")
    run = report["runs"][0]
    rules = [rule["id"] for rule in run["tool"]["driver"]["rules"]]
    assert rules == sorted(rules)
    assert len(run["results"]) == ERRORS + WARNINGS
    prints = set()
    for result in run["results"]:
        assert rules[result["ruleIndex"]] == result["ruleId"]
        assert not result["locations"][0]["physicalLocation"]["artifactLocation"]["uri"].startswith("/")
        prints.add(result["partialFingerprints"]["pbhostLine/v1"])
    assert len(prints) == len(run["results"])
    region = [r for r in run["results"] if "fooo" in r["message"]["text"]][0]["locations"][0]["physicalLocation"]
    # "/* X */ float f() { return " with two code units for X
    assert region["region"]["startColumn"] == 29 and region["region"]["endColumn"] == 33, region
    assert region["artifactLocation"]["uri"] == "sub%20folder/bad%2C%20100%25%3A%C3%A9.pbk", region
    # Fingerprints stay when lines move.
    bad = pathlib.Path("sub folder/bad, 100%:\u00e9.pbk")
    bad.write_text("\n\n" + bad.read_text())
    moved = json.loads(check("--format", "sarif", ".")[0])["runs"][0]["results"]
    assert {r["partialFingerprints"]["pbhostLine/v1"] for r in moved} == prints
    if command:
        pathlib.Path("report.sarif").write_text(text)
        subprocess.run([*command, "validate", "report.sarif", "--output", "validated.sarif", "--log", "ForceOverwrite"],
                       check=True)
        complaints = json.loads(pathlib.Path("validated.sarif").read_text("utf-8-sig"))["runs"][0]["results"]
        wrong = [c for c in complaints if c.get("level") == "error"]
        assert not wrong, wrong


def test_junit():
    pathlib.Path("junit.xml").write_text(check("--format", "junit", ".")[0])
    subprocess.run(["xmllint", "--noout", "--schema", str(FORMATS / "junit.xsd"), "junit.xml"], check=True,
                   stderr=subprocess.PIPE)


def test_github():
    lines = check("--format", "github", ".")[0].splitlines()
    assert len(lines) == ERRORS + WARNINGS
    for line in lines:
        # As the runner reads it: the properties up to "::", each up to a comma.
        match = re.fullmatch(r"::(error|warning) ([^:]*)::(.+)", line)
        assert match, line
        properties = dict(part.split("=", 1) for part in match.group(2).split(","))
        name = properties["file"]
        for code, character in (("%2C", ","), ("%3A", ":"), ("%25", "%")):
            name = name.replace(code, character)
        assert pathlib.Path(name).is_file(), line


def test_options():
    assert check("good.pbk", "sub folder/good.pbk", code=0)[0] == ""
    assert "[unknown-key]" in check("warn.pbk", code=0)[0]
    check("warn.pbk", "--werror")
    assert check("warn.pbk", "-q", code=0)[0] == ""
    assert "No such file" in check("missing.pbk")[0]
    check("notes.txt")
    os.mkdir("nothing")
    assert "no kernel" in check("nothing", code=2)[1]
    # A kernel that takes a driver long: its macros multiply.
    macros = "".join(f"#define M{i + 1} M{i} + M{i}\n" for i in range(24))
    pathlib.Path("slow.pbk").write_text(
        HEAD + BODY.replace("%s(src, outCoord())", "float4(M24)").replace("void eval", "#define M0 1.0\n" + macros +
                                                                          "void eval"))
    out = check("slow.pbk", "good.pbk", "--timeout", "0.5", "--jobs", "1")[0]
    assert "slow.pbk: error: the driver has not compiled it in 0.5 seconds [driver-timeout]" in out, out


def main():
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        for name, text in FILES.items():
            path = pathlib.Path(name)
            path.parent.mkdir(exist_ok=True)
            path.write_text(text)
        test_gcc()
        test_json()
        test_gitlab()
        test_junit()
        test_github()
        test_sarif(sys.argv[2:])
        test_options()
    print("all formats are valid")


if __name__ == "__main__":
    main()
