#!/usr/bin/env python3
"""Runs examples/pointClient.py against a server on loopback that sends two points.

    pointClientTest.py READERS     the folder of the Python readers
"""

import os
import socket
import subprocess
import sys
import threading
from pathlib import Path

program = Path(__file__).resolve().parents[2] / "examples/pointClient.py"

GREETING = bytes.fromhex("68 04000000 0000 00 00 01 01000000 0000 16")
REQUEST = bytes.fromhex("68 04000000 0000 00 00 35 00000000 0000 16")
REPLY = bytes.fromhex(
    "68 3e000000 0000 00 00 35"  #  0 start, length 62, sequence, arg2, arg1, command 0x35
    "3a000000 02000000"  # 10 58 bytes in a byte list, 2 points
    "01 e8030000 000000000000f83f 00000000 0a000000 0b000000 01 02"  # 18 pointId 1000, value 1.5
    "01 e9030000 00000000000024c0 00000000 0a000000 0b000000 01 02"  # 45 pointId 1001, value -10
    "0000 16"  # 72 checksum, end
)
REFUSAL = bytes.fromhex("68 04000000 0000 00 00 ff f9ffffff 0000 16")  # -7


def run(reply):
    """Returns what the client printed, and what the server received."""
    received = bytearray()
    with socket.create_server(("127.0.0.1", 0)) as server:
        server.settimeout(10)

        def serve():
            link, _ = server.accept()
            with link:
                link.settimeout(10)
                link.sendall(GREETING)
                while len(received) < len(REQUEST) and (piece := link.recv(100)):
                    received.extend(piece)
                link.sendall(reply[:20])  # the client must wait for the rest
                link.sendall(reply[20:])

        thread = threading.Thread(target=serve, daemon=True)
        thread.start()
        arguments = [sys.executable, program, "127.0.0.1", str(server.getsockname()[1])]
        environment = {**os.environ, "PYTHONPATH": sys.argv[1]}
        client = subprocess.run(arguments, env=environment, capture_output=True, text=True, timeout=30)
        thread.join(10)
    return client.stdout + client.stderr, bytes(received)


faults = []
for reply, wanted in (
    (REPLY, "point 1000: 1.5\npoint 1001: -10\n"),
    (REFUSAL, "the server refused the request: -7\n"),
):
    printed, received = run(reply)
    if printed != wanted:
        faults.append(f"printed {printed!r}, must be {wanted!r}")
    if received != REQUEST:
        faults.append(f"sent {received.hex()}, must be {REQUEST.hex()}")
print(*faults or ["2 replies, as expected"], sep="\n")
sys.exit(1 if faults else 0)
