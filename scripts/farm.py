"""A Slurm farm on this machine, for tests: a controller and several nodes on loopback, without systemd,
control groups and a database. Needs no root."""
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import time

CONFIGURATION = """ClusterName=test
SlurmctldHost={host}(127.0.0.1)
SlurmctldPort={port}
SlurmUser={user}
SlurmdUser={user}
AuthType=auth/munge
AuthInfo=socket={folder}/munge.socket
CredType=cred/munge
StateSaveLocation={folder}/state
SlurmdSpoolDir={folder}/spool-%n
SlurmctldPidFile={folder}/slurmctld.pid
SlurmdPidFile={folder}/slurmd-%n.pid
SlurmctldLogFile={folder}/slurmctld.log
SlurmdLogFile={folder}/slurmd-%n.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
MpiDefault=none
GresTypes=gpu
ReturnToService=2
SlurmdTimeout=10
InactiveLimit=0
KillWait=2
MinJobAge=2
SlurmctldParameters=enable_configless
SchedulerParameters=sched_interval=1,batch_sched_delay=0,bf_interval=1,sched_min_interval=0
"""


def free_ports(count):
    sockets = [socket.socket() for _ in range(count)]
    for each in sockets:
        each.bind(("127.0.0.1", 0))
    ports = [each.getsockname()[1] for each in sockets]
    for each in sockets:
        each.close()
    return ports


class Farm:
    def __init__(self, folder, nodes):
        self.folder = pathlib.Path(folder)
        self.nodes = [f"node{i + 1}" for i in range(nodes)]
        self.daemons = {}
        ports = free_ports(nodes + 1)
        user = subprocess.run(["id", "-un"], stdout=subprocess.PIPE, text=True, check=True).stdout.strip()
        text = CONFIGURATION.format(folder=self.folder, host=socket.gethostname(), port=ports[0], user=user)
        for name, port in zip(self.nodes, ports[1:]):
            text += f"NodeName={name} NodeHostname={socket.gethostname()} NodeAddr=127.0.0.1 Port={port} CPUs=1 Gres=gpu:1 State=UNKNOWN\n"
        text += f"PartitionName=all Nodes={','.join(self.nodes)} Default=YES MaxTime=INFINITE State=UP\n"
        (self.folder / "state").mkdir(parents=True)
        self.configuration = self.folder / "slurm.conf"
        self.configuration.write_text(text)
        # Stands for a graphics card; Slurm only needs the device's file.
        (self.folder / "gres.conf").write_text("Name=gpu File=/dev/null\n")
        self.environment = dict(os.environ, SLURM_CONF=str(self.configuration), XDG_STATE_HOME=str(self.folder))

    def start(self):
        key = self.folder / "munge.key"
        key.write_bytes(os.urandom(128))
        key.chmod(0o400)
        self.folder.chmod(0o755)
        self.spawn("munged", ["munged", "--foreground", "--force", f"--key-file={key}",
                              f"--socket={self.folder}/munge.socket", f"--pid-file={self.folder}/munged.pid",
                              f"--log-file={self.folder}/munged.log", f"--seed-file={self.folder}/munged.seed"])
        self.wait_until("munged", lambda: (self.folder / "munge.socket").exists())
        self.spawn("slurmctld", ["slurmctld", "-D", "-f", self.configuration])
        for name in self.nodes:
            self.start_node(name)
        self.wait_until("the nodes", lambda: self.slurm("sinfo", "-h", "-o", "%T").strip() == "idle")

    def start_node(self, name):
        self.spawn(name, ["slurmd", "-D", "-N", name, "-f", self.configuration])

    def kill_node(self, name):
        process = self.daemons.pop(name)
        process.send_signal(signal.SIGKILL)
        process.wait()

    def spawn(self, name, words):
        program = shutil.which(words[0], path=os.environ["PATH"] + ":/usr/sbin:/sbin")
        log = open(self.folder / f"{name}.out", "wb")
        self.daemons[name] = subprocess.Popen([program, *words[1:]], env=self.environment, stdout=log, stderr=log)

    def slurm(self, *words):
        return subprocess.run(words, env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              text=True, check=False).stdout

    def wait_until(self, what, test, seconds=60):
        end = time.monotonic() + seconds
        while not test():
            if time.monotonic() > end:
                raise SystemExit(f"{what}: nothing after {seconds} seconds; see {self.folder}\n" +
                                 self.slurm("sinfo", "-N", "-l"))
            time.sleep(0.1)

    def stop(self):
        for process in reversed(list(self.daemons.values())):
            process.terminate()
        for process in self.daemons.values():
            try:
                process.wait(timeout=10)
            except subprocess.TimeoutExpired:
                process.kill()
