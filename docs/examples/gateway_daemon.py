#!/usr/bin/env python3
"""A gateway daemon to start from. usage: gateway_daemon.py lumo_bentelgateway.socket"""
import os
import signal
import socket
import sys

FUNCTION = "SENDBENTELCOMMANDDATAGRAM"
LINES = ("SectionName", "UserCode", "Command", "Payload")
PREFIX = "BENG-"
DONE, UNKNOWN, MALFORMED, REFUSED = 0, 1301, 1302, 1303
MOST_BYTES = 1023  # no client sends more
PATIENCE = 5  # seconds without a byte


def receive(client):
    """Reads up to the empty line, not to the end of the stream: the client keeps it open."""
    received = b""
    while not received.endswith(b"\n\n") and len(received) <= MOST_BYTES:
        piece = client.recv(MOST_BYTES + 1 - len(received))
        if not piece:
            break
        received += piece
    return received


def carry_out(request):
    """Does what is asked and returns the status."""
    lines = [line.partition(": ") for line in request.decode(errors="replace").split("\n")]
    if not request.endswith(b"\n\n") or lines[0][0] != "Request":
        return MALFORMED
    if lines[0][2].upper() != FUNCTION:
        return UNKNOWN
    if tuple(name for name, _, _ in lines[1:-2]) != LINES:
        return MALFORMED
    section, code, command, payload = (value for _, _, value in lines[1:-2])
    if code != "1234":
        return REFUSED
    print(f"{section}: {command} {payload}", flush=True)  # here the real work is done
    return DONE


signal.signal(signal.SIGTERM, lambda *_: sys.exit(0))
listener = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
listener.bind(sys.argv[1])
listener.listen()
print("ready", flush=True)
try:
    while True:
        with listener.accept()[0] as client:
            client.settimeout(PATIENCE)
            try:
                if request := receive(client):  # a client may change its mind and send nothing
                    client.sendall(f"Response Status: {PREFIX}{carry_out(request):04}\n".encode())
            except OSError as failure:  # too slow, or gone
                print(f"no answer given: {failure}", flush=True)
finally:
    os.unlink(sys.argv[1])
