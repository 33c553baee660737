"""Captures of hand-made bytes, and what tshark shows for them."""

import os
import pathlib
import struct
import subprocess
import sys
import xml.etree.ElementTree as xml

sys.dont_write_bytecode = True
sys.path.append(str(pathlib.Path(__file__).parents[1] / "golden"))
from check import read_hex

SERVER = 5000
FIN, SYN, RST, ACK = 1, 2, 4, 16
GOLDEN = pathlib.Path(__file__).parents[1] / "golden" / "frames"


class Capture:
    """A pcap file of bare IPv4 packets, a millisecond apart."""

    def __init__(self, path):
        self.path = str(path)
        self.packets = 0
        self.file = open(path, "wb")
        self.file.write(struct.pack("<IHHiIII", 0xA1B2C3D4, 2, 4, 0, 0, 1 << 18, 228))

    def add(self, protocol, transport, is_request, kept=None):
        ends = [bytes([10, 0, 0, 1]), bytes([10, 0, 0, 2])]
        if not is_request:
            ends.reverse()
        head = struct.pack(">BBHHHBBH4s4s", 0x45, 0, 20 + len(transport), 0, 0, 64, protocol, 0, *ends)
        packet = head + transport
        shown = packet if kept is None else packet[: len(head) + kept]  # truncated by the capture
        time = divmod(self.packets, 1000)
        self.file.write(struct.pack("<IIII", 1700000000 + time[0], 1000 * time[1], len(shown), len(packet)) + shown)
        self.packets += 1
        return self.packets

    def datagram(self, data, is_request, port, kept=None):
        ports = (port, SERVER) if is_request else (SERVER, port)
        return self.add(17, struct.pack(">HHHH", *ports, 8 + len(data), 0) + data, is_request, kept)

    def close(self):
        self.file.close()
        return self.path


class Connection:
    """A TCP connection in a capture; `port` is the client's."""

    def __init__(self, capture, port, opening=False):
        self.capture = capture
        self.port = port
        self.sent = {True: 1000, False: 2000}
        if opening:
            self.segment(b"", True, SYN)
            self.segment(b"", False, SYN | ACK)
            self.segment(b"", True, ACK)

    def segment(self, data, is_request, flags=ACK, kept=None):
        ports = (self.port, SERVER) if is_request else (SERVER, self.port)
        acknowledged = self.sent[not is_request] if flags & ACK else 0
        head = struct.pack(">HHIIBBHHH", *ports, self.sent[is_request], acknowledged, 5 << 4, flags, 65535, 0, 0)
        self.sent[is_request] += len(data) + (1 if flags & (SYN | FIN) else 0)
        return self.capture.add(6, head + data, is_request, kept)


class Tshark:
    """tshark with the dissector at `script`."""

    def __init__(self, script, folder):
        self.command = ["tshark", "-X", f"lua_script:{script}"]
        # without the user's preferences and plugins
        self.environment = dict(os.environ, HOME=str(folder), XDG_CONFIG_HOME=str(folder), LC_ALL="C.UTF-8")

    def run(self, *arguments):
        done = subprocess.run([*self.command, *arguments], env=self.environment, capture_output=True, timeout=120)
        output, errors = done.stdout.decode(errors="replace"), done.stderr.decode(errors="replace")
        for text in (output, errors):
            for line in text.splitlines():
                if "Lua Error" in line or "Lua:" in line or "issector bug" in line:
                    raise AssertionError(line.strip()[:500])
        if done.returncode != 0:
            raise AssertionError(errors)
        return output

    def text(self, path, *arguments):
        """Returns the whole capture as text."""
        ports = ["-d", f"tcp.port=={SERVER},gqframe", "-d", f"udp.port=={SERVER},gqframe"]
        return self.run("-r", path, "-V", *ports, *arguments)

    def read(self, path, *arguments):
        """Returns the packets of a capture as PDML elements."""
        return xml.fromstring(self.text(path, "-T", "pdml", *arguments)).findall("packet")


def field(element, name):
    """Returns the first field of this name in the element, at any depth, or None."""
    return element.find(f".//field[@name='gqframe.{name}']")


def shown(element, name):
    return [each.get("show") for each in element.iterfind(f".//field[@name='gqframe.{name}']")]


def client_port(packet):
    transport = "tcp" if packet.find("proto[@name='tcp']") is not None else "udp"
    ports = [int(packet.find(f".//field[@name='{transport}.{end}port']").get("show")) for end in ("src", "dst")]
    return ports[0] if ports[1] == SERVER else ports[1]


def frames(packet):
    return packet.findall("proto[@name='gqframe']")


def golden_bytes(name):
    return read_hex(GOLDEN / f"{name}.hex")
