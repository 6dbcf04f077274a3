"""What a run of a program costs, counted rather than timed; and the requests and the peer that it is
counted with. Programs run with an empty environment in a directory of their own."""

import contextlib
import os
import pathlib
import re
import shutil
import socket
import subprocess
import sys
import tempfile
from typing import NamedTuple

PROJECT = pathlib.Path(__file__).resolve().parents[2]
DESK = PROJECT / "build/release"
CONTROLLER = PROJECT / "build/controller"
PATIENCE_SECONDS = 120  # for any one process

ENVELOPE = ('<?xml version="1.0" encoding="UTF-8"?>\n'
            '<SOAP-ENV:Envelope xmlns:SOAP-ENV="http://schemas.xmlsoap.org/soap/envelope/"'
            ' xmlns:ns="urn:xmethods-lumows"><SOAP-ENV:Body'
            ' SOAP-ENV:encodingStyle="http://schemas.xmlsoap.org/soap/encoding/">'
            "<ns:service-getelementstatusResponse><result>LMWS-000</result><status>OFF</status>"
            "<currentvalue>{}</currentvalue></ns:service-getelementstatusResponse>"
            "</SOAP-ENV:Body></SOAP-ENV:Envelope>\r\n")


class Command(NamedTuple):
    """What is started and how it has to end."""
    words: list
    status: int = 0
    last_line: str | None = "LMCM-0000"


def requests(build, port):
    """One of each kind, by the program of a build."""
    def request(*words):
        return Command([str(build / "lumocmd"), *words])

    return {
        "gateway": request("-t", "BENTELLOCAL", "-s", "gateway.socket",
                           "-f", "SENDBENTELCOMMANDDATAGRAM", "-p", "hall|1234|ARM|1"),
        "fsmcore": request("-t", "FSMCORE", "-s", "fsmcore.socket", "-f", "GETSTATE", "-p", "12|on"),
        "service": request("-t", "SOAP", "-u", f"http://127.0.0.1:{port}/",
                           "-f", "SERVICE_GETELEMENTSTATUS", "-p", "DEMO-SESSION|LIVING-LAMP"),
        "help": request("-?")._replace(status=250, last_line=""),
    }


def has_controller():
    return (CONTROLLER / "CMakeCache.txt").exists()


def build_for(*purposes, targets=("lumocmd",)):
    """Installs what the purposes need and brings the programs up to date, the controller's where it is
    configured; without a word when all is well."""
    steps = [["scripts/install-packages", "build", *purposes],
             ["cmake", "--preset", "release"],
             ["cmake", "--build", DESK, "--target", "answering_peer", *targets]]
    if has_controller():
        steps[0].append("controller")
        steps.append(["cmake", "--build", CONTROLLER, "--target", *targets])
    for step in steps:
        done = subprocess.run(step, cwd=PROJECT, capture_output=True, text=True, check=False)
        if done.returncode != 0:
            sys.exit(done.stdout + done.stderr)


@contextlib.contextmanager
def answering_peer(size=1024):
    """A peer that answers with success, a call with a text of that size, in a directory that becomes the
    current one: its port, and a function that runs a command and returns what it sent."""
    body = ENVELOPE.format("x" * size)
    answers = {
        "gateway.socket": "Response Status: BENG-0000\n",
        "fsmcore.socket": "Response Status: FSMC-000\nParameter Count: 0\n",
        "web": "HTTP/1.1 200 OK\r\nContent-Type: text/xml; charset=utf-8\r\n"
               f"Content-Length: {len(body)}\r\nConnection: close\r\n\r\n{body}",
    }
    with tempfile.TemporaryDirectory() as directory, contextlib.ExitStack() as stack:
        os.chdir(directory)
        words, sockets = [DESK / "tests/bench/answering_peer"], []
        for path, answer in answers.items():
            is_web = path == "web"
            listener = stack.enter_context(socket.socket(socket.AF_INET if is_web else socket.AF_UNIX))
            listener.bind(("127.0.0.1", 0) if is_web else path)
            listener.listen()
            pathlib.Path(path + ".answer").write_bytes(answer.encode())
            sockets.append(listener.fileno())
            words += [str(listener.fileno()), path + ".answer"]
        peer = stack.enter_context(subprocess.Popen(words, pass_fds=sockets, stdin=subprocess.PIPE,
                                                    stdout=subprocess.PIPE))

        def sent(command):
            run(command)
            peer.stdin.write(b"?")
            peer.stdin.flush()
            return peer.stdout.read(int(peer.stdout.readline()))

        yield listener.getsockname()[1], sent


def run(command, *prefix):
    """Runs a command behind a prefix of words. It has to end as it should."""
    words = [*prefix, *command.words]
    ended = subprocess.run([shutil.which(words[0]), *words[1:]], env={}, stdin=subprocess.DEVNULL,
                           capture_output=True, timeout=PATIENCE_SECONDS, check=False)
    last_line = ended.stdout.decode(errors="replace").splitlines()[-1:] or [""]
    if ended.returncode != command.status or command.last_line not in (None, last_line[0]):
        sys.exit(f"{words}: {ended.returncode}, {last_line}, {ended.stderr[-2000:]}")


def desk_counts(command):
    """Instructions of the program's own file, its static libraries included, and system calls from the
    program's start on. The loader's and libc's instructions vary with the machine; these do not."""
    run(command, "valgrind", "-q", "--tool=callgrind", "--compress-strings=no", "--compress-pos=no",
        "--callgrind-out-file=profile")
    own, is_own, lines = 0, False, iter(pathlib.Path("profile").read_text().splitlines())
    for line in lines:
        if line.startswith("ob="):
            is_own = line[3:] == os.path.realpath(command.words[0])
        elif line.startswith("calls="):
            next(lines)  # what the call took stands with the callee as well
        elif line[:1].isdigit() and is_own:
            own += int(line.split()[1])
    run(command, "strace", "-o", "trace")
    return own, len(re.findall(r"^\w+\(", pathlib.Path("trace").read_text(), re.MULTILINE))


def controller_counts(command):
    """All instructions, and system calls from the program's start on, as the emulator sees them."""
    run(command, "qemu-arm-static", "-singlestep", "-d", "exec,nochain,strace", "-D", "trace")
    trace = pathlib.Path("trace").read_text()
    return (len(re.findall(r"^Trace ", trace, re.MULTILINE)),
            len(re.findall(r"^\d+ (?:\w+\(|Unknown syscall)", trace, re.MULTILINE)))


def peak_memory_kib(command):
    run(command, "time", "-q", "-f", "%M", "-o", "peak")
    return int(pathlib.Path("peak").read_text())
