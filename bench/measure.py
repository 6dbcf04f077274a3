"""What a run of a program costs, counted rather than timed: instructions, system calls, memory, and what
its file brings with it. And the requests and the peer that it is counted with.

Programs run with an empty environment in the peer's directory, so that nothing of the caller's shows.
"""

import os
import pathlib
import re
import select
import shutil
import socket
import subprocess
import tempfile
from typing import NamedTuple

PROJECT = pathlib.Path(__file__).resolve().parent.parent
DESK = PROJECT / "build/release"
ARM = PROJECT / "build/armhf"
LUMOCMD = DESK / "lumocmd"
ARM_LUMOCMD = ARM / "lumocmd"
EMULATOR = ["qemu-arm-static", "-L", "/usr/arm-linux-gnueabihf"]

PATIENCE_SECONDS = 120  # for any one process; callgrind with a large answer takes the longest


class Failure(Exception):
    """Something did not go as it has to; nothing that was measured counts."""


class Command(NamedTuple):
    """What is started and how it has to end. {port} stands for the peer's, {size} for the answer's."""
    words: list
    status: int = 0
    last_line: str = "LMCM-0000"
    given: str = os.devnull  # standard input

    def to(self, port, size=1024):
        return self._replace(words=[word.replace("{port}", str(port)).replace("{size}", str(size))
                                    if "{" in word else word for word in self.words])

    def by(self, program, wrapper=()):
        return self._replace(words=[*wrapper, str(program), *self.words[1:]])


def fsmcore_request(values):
    return Command([str(LUMOCMD), "-t", "FSMCORE", "-s", "fsmcore.socket", "-f", "GETSTATE",
                    "-p", "|".join(values)])


# One of each kind, for the peer in bench/answering_peer.cpp.
REQUESTS = {
    "gateway": Command([str(LUMOCMD), "-t", "BENTELLOCAL", "-s", "gateway.socket",
                        "-f", "SENDBENTELCOMMANDDATAGRAM", "-p", "hall|1234|ARM|1"]),
    "fsmcore": fsmcore_request(["12", "on"]),
    "service": Command([str(LUMOCMD), "-t", "SOAP", "-u", "http://127.0.0.1:{port}/{size}",
                        "-f", "SERVICE_GETELEMENTSTATUS", "-p", "DEMO-SESSION|LIVING-LAMP"]),
    "help": Command([str(LUMOCMD), "-?"], status=250, last_line=""),
}


def is_arm_configured():
    return (ARM / "CMakeCache.txt").exists()


def build_for(*purposes, targets=()):
    """Installs what the purposes need and brings the programs up to date, the ARM one where there is a
    build of it; without a word when all is well."""
    install = [PROJECT / "scripts/install-packages", "build", *purposes]
    steps = [
        ["cmake", "--preset", "release"],
        ["cmake", "--build", "--preset", "release", "--target", "lumocmd", "answering_peer", *targets],
    ]
    if is_arm_configured():
        install.append("armhf")
        steps.append(["cmake", "--build", "--preset", "armhf", "--target", "lumocmd"])
    for step in [install, *steps]:
        done = subprocess.run(step, cwd=PROJECT, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              text=True, check=False)
        if done.returncode != 0:
            raise Failure(done.stdout)


class Peer:
    """The answering peer in a directory of its own, for a with statement."""

    def __enter__(self):
        self.directory = tempfile.mkdtemp()
        try:
            self.process = subprocess.Popen([DESK / "bench/answering_peer", self.directory],
                                            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        except OSError as error:
            shutil.rmtree(self.directory)
            raise Failure(f"the peer did not start: {error}") from error
        said, _, _ = select.select([self.process.stdout], [], [], PATIENCE_SECONDS)
        self.port = self.process.stdout.readline().strip() if said else ""
        if not self.port:
            self.__exit__()
            raise Failure("the peer did not start")
        return self

    def __exit__(self, *_):
        self.process.stdin.close()
        try:
            self.process.wait(PATIENCE_SECONDS)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        self.process.stdout.close()
        shutil.rmtree(self.directory)


def run(command, directory, prefix=()):
    """Runs a command behind a prefix of words; what it wrote on both outputs. It has to end well."""
    words = [*prefix, *command.words]
    words[0] = shutil.which(words[0])
    with open(command.given, "rb") as given:
        try:
            ended = subprocess.run(words, cwd=directory, env={},
                                   stdin=given, capture_output=True, timeout=PATIENCE_SECONDS,
                                   check=False)
        except subprocess.TimeoutExpired as late:
            raise Failure(f"{words}: did not end") from late
    output = ended.stdout.decode(errors="replace")
    last_line = output.splitlines()[-1] if output else ""
    if ended.returncode != command.status or command.last_line not in (None, last_line):
        raise Failure(f"{words}: {ended.returncode}, {output[-200:]}, "
                      f"{ended.stderr[-2000:].decode(errors='replace')}")
    return output, ended.stderr.decode(errors="replace")


# -------------------------------------------------------------------------------------------------
# What a run costs


def cost_by_object(profile):
    """Instructions by object file, from callgrind's report: what each ran itself, without its calls."""
    costs, names = {}, {}
    current, is_call, total = None, False, None
    for line in profile:
        named = re.match(r"(c?ob)=\((\d+)\)(?: (.*))?$", line)
        if named:
            kind, number, name = named.groups()
            if name:  # at the first use alone
                names[number] = name
            if kind == "ob":
                current = names[number]
        elif line.startswith("calls="):
            is_call = True
        elif line.startswith("summary:"):
            total = int(line.split()[1])
        elif re.match(r"[0-9+*-]", line):
            if not is_call:  # else what the call took, which stands with the callee
                costs[current] = costs.get(current, 0) + int(line.split()[1])
            is_call = False
    if total is None or sum(costs.values()) != total:
        raise Failure(f"callgrind's report was misread: {sum(costs.values())} of {total}")
    return costs


def instructions(command, directory):
    """All instructions, and those of the program's own file, its static libraries included."""
    with tempfile.NamedTemporaryFile("r") as profile:
        run(command, directory, ["valgrind", "--quiet", "--tool=callgrind",
                                 f"--callgrind-out-file={profile.name}"])
        costs = cost_by_object(profile)
    own = os.path.realpath(shutil.which(command.words[0]))
    return sum(costs.values()), sum(cost for name, cost in costs.items()
                                    if name and os.path.realpath(name) == own)


def emulated_instructions(command, directory):
    """The same for an ARM program, whose emulator writes a line for each instruction, and before them
    where it put the program."""
    with tempfile.NamedTemporaryFile("r") as record:
        run(command, directory,
            [*EMULATOR, "-singlestep", "-d", "exec,nochain,page", "-D", record.name])
        bounds, total, own = {}, 0, 0
        for line in record:
            if line.startswith("Trace "):
                address = int(line.split("/")[1], 16)
                total += 1
                own += bounds["start_code"] <= address < bounds["end_code"]
            elif line.startswith(("start_code", "end_code")):
                name, value = line.split()
                bounds[name] = int(value, 16)
    return total, own


def system_calls(command, directory):
    """From the program's start on, that call included."""
    with tempfile.NamedTemporaryFile("r") as record:
        run(command, directory, ["strace", "-o", record.name])
        return sum(1 for line in record if re.match(r"\w+\(", line))


def peak_memory_kib(command, directory):
    with tempfile.NamedTemporaryFile("r") as record:
        run(command, directory, ["/usr/bin/time", "-q", "-f", "%M", "-o", record.name])
        return int(record.read())


# -------------------------------------------------------------------------------------------------
# What a file brings with it


def file_figures(program):
    """Size, imported names and places to relocate, packed ones counted one by one."""
    symbols = subprocess.run(["readelf", "-W", "--dyn-syms", program], capture_output=True, text=True,
                             check=True).stdout
    relocations = subprocess.run(["readelf", "-W", "-r", program], capture_output=True, text=True,
                                 check=True).stdout
    return {
        "size_bytes": os.path.getsize(program),
        "imported_names": len(re.findall(r"^.* UND \S+.*$", symbols, re.MULTILINE)),
        "relocations": len(re.findall(r"^[0-9a-f]{8,}\b", relocations, re.MULTILINE)),
    }


# -------------------------------------------------------------------------------------------------
# What travels


def is_complete(data):
    headers, blank_line, body = data.partition(b"\r\n\r\n")
    if blank_line:
        length = re.search(rb"Content-Length: (\d+)", headers)
        return length is not None and len(body) >= int(length[1])
    return data.endswith(b"\n\n")


def receive_request(listener):
    listener.settimeout(PATIENCE_SECONDS)
    connection, _ = listener.accept()
    with connection:
        connection.settimeout(PATIENCE_SECONDS)
        data = b""
        while not is_complete(data):
            piece = connection.recv(65536)
            if not piece:
                break
            data += piece
    return data


def sent_bytes(command):
    """What a command sends to a peer that listens where the answering peer would and answers nothing."""
    with tempfile.TemporaryDirectory() as directory, \
            socket.create_server(("127.0.0.1", 0)) as network, \
            socket.socket(socket.AF_UNIX) as gateway, open(command.given, "rb") as given:
        gateway.bind(f"{directory}/gateway.socket")
        gateway.listen()
        words = command.to(network.getsockname()[1]).words
        with subprocess.Popen(words, cwd=directory, env={}, stdin=given, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL) as process:
            try:
                data = receive_request(gateway if words == command.words else network)
                process.wait(PATIENCE_SECONDS)
            except (OSError, subprocess.TimeoutExpired) as late:
                raise Failure(f"{words}: no request, or no end") from late
            finally:
                process.kill()
    return data
