#!/usr/bin/env python3
"""The other end of a serial line: runs a program that connects to the socket PATH, and answers each byte received
there with its complement until the program ends. Exits with the program's status.

    serialPeer.py PATH PROGRAM [ARGUMENT...]
"""

import os
import socket
import subprocess
import sys
import threading


def answer(listener):
    connection, _ = listener.accept()
    while data := connection.recv(4096):
        connection.sendall(bytes(byte ^ 0xFF for byte in data))


def main():
    path, *command = sys.argv[1:]
    if os.path.exists(path):
        os.unlink(path)
    with socket.socket(socket.AF_UNIX) as listener:
        listener.bind(path)
        listener.listen(1)
        threading.Thread(target=answer, args=(listener,), daemon=True).start()
        return subprocess.run(command, stdin=subprocess.DEVNULL, check=False).returncode


sys.exit(main())
