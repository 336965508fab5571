#!/usr/bin/env python3
"""Renders a sequence on a Slurm farm on this machine, with faults, and compares it with one machine.

    scripts/test_farm.py BUILD

BUILD has the program pbhost. ./test farm builds it and runs this.
"""
import hashlib
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time

import farm

FRAMES = 60
# Slow enough that faults meet running tasks.
KERNEL = """<languageVersion : 1.0;>
kernel Slow < namespace : "test"; vendor : "test"; version : 1; >
{
    parameter float gain < defaultValue: 0.0; minValue: 0.0; maxValue: 1.0; >;
    output pixel4 dst;
    void evaluatePixel() {
        float sum = 0.0;
        for (int i = 0; i < 400; ++i)
            sum = sin(sum + outCoord().x * 0.01 + gain);
        dst = float4(fract(sum), gain, fract(outCoord().y * 0.01), 1.0);
    }
}
"""


def require(condition, text):
    if not condition:
        raise SystemExit("FAILED: " + text)


class Shot:
    """The render of the test: its words, and its frames in a folder."""

    def __init__(self, pbhost, folder):
        self.pbhost = pbhost
        self.folder = folder
        (folder / "slow.pbk").write_text(KERNEL)

    def render(self, name, kernel="slow.pbk"):
        (self.folder / name).mkdir(exist_ok=True)
        return ["render", kernel, "--size", "480x270", "--frames", f"1-{FRAMES}", "--key", "gain@1=0", "--key",
                f"gain@{FRAMES}=1", "-q", "-o", f"{name}/out.####.png"]

    def hashes(self, name):
        return {path.name: hashlib.sha256(path.read_bytes()).hexdigest()
                for path in sorted((self.folder / name).glob("out.*.png"))}


def tasks_running(name):
    """The ids of the programs that render into that folder: of each, the process that waits."""
    found = []
    for process in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            words = (process / "cmdline").read_bytes().split(b"\0")
            parent = int((process / "stat").read_text().rsplit(")", 1)[1].split()[1])
            by = (pathlib.Path("/proc") / str(parent) / "comm").read_text().strip()
        except (OSError, IndexError):
            continue
        if f"{name}/out.####.png".encode() in words and by != "pbhost" and b"--resume" in words:
            found.append(int(process.name))
    return found


def frames_made(shot, name):
    return len(list((shot.folder / name).glob("out.*.png")))


def run_with_faults(cluster, shot):
    words = [shot.pbhost, "submit", "slurm", "--chunk", "5", "--gres", "gpu:1", "--wait", *shot.render("farm")]
    started = time.monotonic()
    waiting = subprocess.Popen(words, cwd=shot.folder, env=cluster.environment, stdout=subprocess.PIPE, text=True)
    seen = {}
    faults = [(5, "kill"), (12, "node"), (20, "requeue"), (25, "kill")]
    done = []
    while waiting.poll() is None:
        for frame, value in shot.hashes("farm").items():
            require(seen.setdefault(frame, value) == value, f"{frame} was rendered to two different results")
        if faults and frames_made(shot, "farm") >= faults[0][0] and tasks_running("farm"):
            done.append(do_fault(cluster, faults.pop(0)[1]))
        require(time.monotonic() - started < 300, "the job did not end")
        time.sleep(0.05)
    out = waiting.stdout.read()
    require(waiting.returncode == 0, f"the job ended with {waiting.returncode}")
    require(not faults, f"no task was running for these faults: {faults}")
    print("faults:", "; ".join(done))
    return out.strip()


def do_fault(cluster, kind):
    if kind == "kill":
        process = tasks_running("farm")[0]
        os.kill(process, signal.SIGKILL)
        return f"killed process {process}"
    if kind == "node":
        cluster.kill_node("node2")
        time.sleep(1)
        cluster.start_node("node2")
        return "killed and started the daemon of node2"
    task = cluster.slurm("squeue", "-h", "-t", "RUNNING", "-o", "%F_%K").split()[0]
    answer = cluster.slurm("scontrol", "requeue", task)
    require(answer.strip() == "", f"requeue of {task}: {answer}")
    return f"requeued task {task}"


def test_faults(cluster, shot):
    subprocess.run([shot.pbhost, *shot.render("one")], cwd=shot.folder, check=True)
    job = run_with_faults(cluster, shot)
    one, many = shot.hashes("one"), shot.hashes("farm")
    require(len(one) == FRAMES and one == many, "the frames of the farm and of one machine differ")
    require(len(set(one.values())) == FRAMES, "the frames of the test are not all different")
    logs = [path.read_text() for path in (shot.folder / "farm/.pbhost").glob("job-*/chunk-*.log")]
    nodes = {line.split(",")[0] for log in logs for line in log.splitlines() if ", attempt" in line}
    require(any("attempt 1" in log for log in logs), "no task started again")
    require(sum(log.count("attempt 0") for log in logs) > FRAMES // 5, "no task was requeued")
    status = subprocess.run([shot.pbhost, "submit", "slurm", "--status", job], env=cluster.environment,
                            stdout=subprocess.PIPE, text=True, check=True).stdout
    require(status == f"job {job}: {FRAMES} of {FRAMES} frames, ended\n", status)
    # A second submission finds everything complete.
    before = {path: path.stat().st_mtime_ns for path in (shot.folder / "farm").glob("out.*.png")}
    subprocess.run([shot.pbhost, "submit", "slurm", "--wait", *shot.render("farm")], cwd=shot.folder,
                   env=cluster.environment, check=True, stdout=subprocess.DEVNULL)
    require(before == {path: path.stat().st_mtime_ns for path in before}, "complete frames were rendered again")
    print(f"{FRAMES} frames, equal to those of one machine; hosts: {', '.join(sorted(nodes))}")


def test_failure(cluster, shot):
    (shot.folder / "broken.pbk").write_text(KERNEL.replace("sin(", "sine("))
    result = subprocess.run([shot.pbhost, "submit", "slurm", "--chunk", "30", "--wait",
                             *shot.render("broken", "broken.pbk")], cwd=shot.folder, env=cluster.environment,
                            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=False)
    require(result.returncode == 3, f"a kernel that does not compile ended with {result.returncode}")
    require("the frames 1-30 failed, exit code 3; see " in result.stderr, result.stderr)
    log = pathlib.Path(result.stderr.split("; see ")[1].strip())
    require("no function with name 'sine'" in log.read_text(), "the log does not say why")
    # The nodes have one card each.
    result = subprocess.run([shot.pbhost, "submit", "slurm", "--gres", "gpu:2", *shot.render("cards")],
                            cwd=shot.folder, env=cluster.environment, stderr=subprocess.PIPE, text=True, check=False)
    require(result.returncode != 0 and "node configuration is not available" in result.stderr, result.stderr)
    print("a failure: exit code, frames and log are named")


def test_commands(shot):
    lines = subprocess.run([shot.pbhost, "submit", "print", "--chunk", "30", *shot.render("print")],
                           cwd=shot.folder, stdout=subprocess.PIPE, text=True, check=True).stdout.splitlines()
    require(len(lines) == 2, f"{len(lines)} commands")
    for line in lines:
        subprocess.run(["sh", "-c", line], cwd=shot.folder, check=True)
    require(shot.hashes("print") == shot.hashes("one"), "the printed commands made other frames")
    print("printed commands: the same frames")


def main():
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # stops the daemons, too
    pbhost = pathlib.Path(sys.argv[1]).resolve() / "pbhost/pbhost"
    with tempfile.TemporaryDirectory(prefix="farm-") as folder:
        base = pathlib.Path(folder)
        os.environ["XDG_CONFIG_HOME"] = folder
        cluster = farm.Farm(base / "slurm", 3)
        shot = Shot(pbhost, base)
        start = time.monotonic()
        try:
            cluster.start()
            print(f"three nodes after {time.monotonic() - start:.1f} s")
            test_faults(cluster, shot)
            test_failure(cluster, shot)
            test_commands(shot)
        finally:
            cluster.stop()


if __name__ == "__main__":
    main()
