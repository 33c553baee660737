#!/usr/bin/env python3
# Prints the current values of a server's points, as pointClient.cpp does.
#   pointClient.py HOST PORT     against: gqtool station
# Needs the Python readers of the formats in PYTHONPATH, and python3-kaitaistruct.

import socket
import struct
import sys

# [client]
from gq_frame import GqFrame
from gq_records import GqRecords

READ_VALUES = 0x35  # agreed with the server


def request(command, payload):
    header = struct.pack("<BIHBBB", 0x68, len(payload), 0, 0, 0, command)
    return header + payload + b"\x00\x00\x16"


def read_values(host, port):
    with socket.create_connection((host, port), timeout=5) as link:
        stream = link.makefile("rb")
        if GqFrame.from_io(stream).payload.integer.value <= 0:
            sys.exit("the server refused the client in its greeting")
        link.sendall(request(READ_VALUES, struct.pack("<i", 0)))
        reply = GqFrame.from_io(stream)
    if reply.is_error:
        sys.exit(f"the server refused the request: {reply.payload.error.code}")
    return GqRecords.PointRealDatas.from_bytes(reply.payload.bytes.items).items
# [client]


if len(sys.argv) != 3:
    print("usage: pointClient.py HOST PORT", file=sys.stderr)
    sys.exit(2)
for point in read_values(sys.argv[1], int(sys.argv[2])):
    print(f"point {point.point_id}: {point.value:g}")
