#!/usr/bin/env python3
"""Tests of the Wireshark dissector, using tshark.

    [GQFRAME=gqframe.lua] [GQTOOL=gqtool] dissectorTest.py [SUITE[.TEST]]
"""

import json
import math
import os
import pathlib
import random
import re
import subprocess
import tempfile
import unittest

from captures import (
    ACK,
    FIN,
    GOLDEN,
    RST,
    SERVER,
    Capture,
    Connection,
    Tshark,
    client_port,
    field,
    frames,
    golden_bytes,
    read_hex,
    shown,
)

PIECES = {path.stem: json.loads(path.read_text()) for path in sorted(GOLDEN.glob("*.json"))}
SCRIPT = pathlib.Path(__file__).parents[2] / "packaging/wireshark/gqframe.lua"
FORMS = {"int", "ints", "bytes", "strings"}
WHOLE_PIECES = ["-o", "tcp.desegment_tcp_streams:FALSE"]  # a piece ends where its segment ends


class DissectorTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.tshark = Tshark(os.environ.get("GQFRAME", SCRIPT), self.folder)

    def capture(self):
        return Capture(self.folder / "frames.pcap")


def given_form(form):
    """Returns preferences that read the payloads of other commands in this form."""
    return [] if form is None else ["-o", f"gqframe.request_forms:*={form}", "-o", f"gqframe.reply_forms:*={form}"]


def content(form, element):
    if form == "bytes":
        data = field(element, "bytes")
        return "" if data is None else data.get("value")
    if form == "strings":
        return shown(element, "text")
    numbers = [int(number) for number in shown(element, "code" if form == "error" else "int")]
    return numbers if form in ("ints", "intPair") else numbers[0]


FAULTS = {
    "cut": "cut",
    "impossible_length": "length",
    "large_length": "length",
    "wrong_end": "end",
    "short_form": "form",
}


def part(element):
    """Returns a part of tests/golden/frames as shown by the dissector, with its offset in the packet."""
    result = {"offset": int(element.get("pos"))}
    if field(element, "garbage") is not None:
        return {**result, "garbage": field(element, "garbage").get("value")}
    for name in ("length", "sequence", "arg2", "arg1", "command"):
        if field(element, name) is not None:
            result[name] = int(field(element, name).get("show"), 0)
    for name in ("header", "payload", "check", "end"):
        if field(element, name) is not None:
            result[name] = field(element, name).get("value")
    for note, fault in FAULTS.items():
        if field(element, note) is not None:
            result["fault"] = fault
    if "command" in result:
        result.setdefault("payload", "")
    form = field(element, "form")
    if form is not None:
        result["form"] = form.get("show")
        if "fault" not in result or result["form"] == "strings":
            result["content"] = content(result["form"], form)
        for name in ("rest", "padding"):
            if field(form, name) is not None:
                result["rest"] = int(field(form, name).get("size"))
    return result


def joined(parts):
    """Removes offsets and joins garbage from several segments into one part."""
    result = []
    for each in parts:
        each = {key: value for key, value in each.items() if key != "offset"}
        if "garbage" in each and result and "garbage" in result[-1]:
            each = {"garbage": result.pop()["garbage"] + each["garbage"]}
        result.append(each)
    return result


def segment_sizes(size):
    """Returns ways to split a piece of this size into segments."""
    return [1] * size, [2, 3, 5, 7] * size, [9, 1] * size, [11] * size, [16] * size


class GoldenFrames(DissectorTest):
    def parts_by_port(self, packets):
        parts = {}
        for packet in packets:
            parts.setdefault(client_port(packet), []).extend(part(element) for element in frames(packet))
        return parts

    def test_matchTheirJsonInOnePiece(self):
        for form in (None, *sorted(FORMS)):
            names = [name for name, piece in PIECES.items() if piece.get("form") == form]
            self.assertTrue(names)
            capture = self.capture()
            for port, name in enumerate(names, 40000):
                is_request = PIECES[name]["direction"] == "request"
                if PIECES[name]["transport"] == "tcp":
                    Connection(capture, port).segment(golden_bytes(name), is_request)
                else:
                    capture.datagram(golden_bytes(name), is_request, port)
            parts = self.parts_by_port(self.tshark.read(capture.close(), *WHOLE_PIECES, *given_form(form)))
            for port, name in enumerate(names, 40000):
                with self.subTest(name):
                    headers = 40 if PIECES[name]["transport"] == "tcp" else 28
                    for each in parts[port]:
                        each["offset"] -= headers
                    self.assertEqual(parts[port], PIECES[name]["value"])

    def test_matchTheirJsonInACaptureOfText2pcap(self):
        for transport, form in sorted({(piece["transport"], piece.get("form", "")) for piece in PIECES.values()}):
            names = [
                name
                for name, piece in PIECES.items()
                if piece["transport"] == transport and piece.get("form", "") == form
            ]
            dump, path = self.folder / "dump.txt", self.folder / "dump.pcapng"
            with open(dump, "w", encoding="ascii") as file:
                for name in names:
                    side = "I" if PIECES[name]["direction"] == "request" else "O"
                    print(f"{side}\n000000 {golden_bytes(name).hex(' ')}", file=file)
            ports = ["-T" if transport == "tcp" else "-u", f"40000,{SERVER}"]
            subprocess.run(["text2pcap", "-q", "-D", *ports, dump, path], check=True, capture_output=True, timeout=60)
            packets = self.tshark.read(path, *WHOLE_PIECES, *given_form(form or None))
            self.assertEqual(len(packets), len(names))
            for name, packet in zip(names, packets):
                with self.subTest(name):
                    headers = 54 if transport == "tcp" else 42
                    parts = [part(element) for element in frames(packet)]
                    self.assertEqual([{**each, "offset": each["offset"] - headers} for each in parts],
                                     PIECES[name]["value"])

    def test_areReassembledFromAnySegments(self):
        for form in (None, *sorted(FORMS)):
            capture = self.capture()
            expected = {}
            for name, piece in PIECES.items():
                if piece.get("form") != form or piece["transport"] == "udp":
                    continue
                data = golden_bytes(name)
                for sizes in segment_sizes(len(data)):
                    port = 40000 + len(expected)
                    expected[port] = name
                    connection = Connection(capture, port)
                    offset = 0
                    for size in sizes:
                        if offset < len(data):
                            connection.segment(data[offset : offset + size], piece["direction"] == "request")
                        offset += size
            parts = self.parts_by_port(self.tshark.read(capture.close(), *given_form(form)))
            for port, name in expected.items():
                with self.subTest(name, port=port):
                    whole = [each for each in PIECES[name]["value"] if each.get("fault") != "cut"]  # the dissector waits for the rest of a cut frame
                    self.assertEqual(joined(parts.get(port, [])), joined(whole))


class Agreement(DissectorTest):
    """The dissector and gqtool decode find the same fields and faults, also in faulty bytes."""

    def decoded(self, data, piece):
        options = ["--udp"] * (piece["transport"] == "udp") + ["--request"] * (piece["direction"] == "request")
        if "form" in piece:
            options += ["--payload", piece["form"]]
        command = [os.environ["GQTOOL"], "decode", "--as", "frames", "--json", "--raw", "-", *options]
        done = subprocess.run(command, input=data, capture_output=True, timeout=60)
        self.assertIn(done.returncode, (0, 1), done.stderr)
        return json.loads(done.stdout)["value"]

    @staticmethod
    def comparable(parts, headers=0):
        """Writes control characters as tshark does, and omits an empty list before a fault, as tshark shows none."""
        result = []
        for each in parts:
            each = {**each, "offset": each["offset"] - headers}
            if each.get("form") == "strings" and "content" in each:
                each["content"] = [
                    "".join(c if c.isprintable() else f"\\x{ord(c):x}" for c in text) for text in each["content"]
                ]
            if "fault" in each and not each.get("content"):
                each.pop("content", None)
            result.append(each)
        return result

    def expect_agreement(self, pieces):
        """Compares both on pairs of a golden file's content and bytes."""
        for form in (None, *sorted(FORMS)):
            chosen = [(piece, data) for piece, data in pieces if piece.get("form") == form]
            capture = self.capture()
            for port, (piece, data) in enumerate(chosen, 40000):
                is_request = piece["direction"] == "request"
                if piece["transport"] == "tcp":
                    Connection(capture, port).segment(data, is_request)
                else:
                    capture.datagram(data, is_request, port)
            largest = "gqframe.largest_payload:4194304"  # as gqtool decode
            preferences = [*WHOLE_PIECES, *given_form(form), "-o", largest]
            packets = self.tshark.read(capture.close(), *preferences)
            for (piece, data), packet in zip(chosen, packets):
                headers = 40 if piece["transport"] == "tcp" else 28
                with self.subTest(data.hex(), form=form, direction=piece["direction"], transport=piece["transport"]):
                    self.assertEqual(
                        self.comparable([part(element) for element in frames(packet)], headers),
                        self.comparable(self.decoded(data, piece)),
                    )

    def test_holdsForTheGoldenFrames(self):
        self.expect_agreement([(piece, golden_bytes(name)) for name, piece in PIECES.items()])

    def test_holdsForDamagedFrames(self):
        chance = random.Random(1)
        pieces = []
        for name, piece in PIECES.items():
            for _ in range(2):
                data = bytearray(golden_bytes(name))
                for _ in range(chance.randrange(1, 4)):
                    data[chance.randrange(len(data))] = chance.choice((0, 1, 2, 5, 0x16, 0x68, 0x7F, 0xFF))
                cut = chance.randrange(1, len(data) + 1) if chance.randrange(3) == 0 else len(data)
                pieces.append((piece, bytes(data[:cut])))
        self.expect_agreement(pieces)


class Dissector(DissectorTest):
    def reply_in(self, name, *preferences):
        capture = self.capture()
        Connection(capture, 40000).segment(golden_bytes(name), False)
        return frames(self.tshark.read(capture.close(), *preferences)[0])[0]

    def test_offersTheFormsThatFitExactly(self):
        for name, candidates in {
            "requestInt": ["int"],
            "replyInts": ["ints"],
            "replyBytes": ["bytes"],
            "replyStrings": ["strings"],
            "replyStringsEmpty": ["int", "ints", "bytes", "strings"],
            "replyInt": [],  # has bytes after the form
            "replyIntsShort": [],
            "systemStateReply": [],  # known
        }.items():
            with self.subTest(name):
                element = self.reply_in(name)
                self.assertEqual(shown(element, "candidate"), candidates)
                self.assertEqual(shown(element, "form"), ["int"] if name == "systemStateReply" else [])

    def test_offersFormsBeforePaddingOnlyOverUdp(self):
        padded = bytes.fromhex("68330000000000000020") + bytes.fromhex("feffffff").ljust(51, b"\0") + b"\0\0\x16"
        capture = self.capture()
        capture.datagram(padded, False, 40000)
        Connection(capture, 40000).segment(padded, False)
        datagram, segment = self.tshark.read(capture.close())
        self.assertEqual(shown(datagram, "candidate"), ["int"])
        self.assertEqual(shown(segment, "candidate"), [])

    def test_usesFormsByCommand(self):
        forms = ["-o", "gqframe.reply_forms:0x20=ints, 33=bytes", "-o", "gqframe.request_forms:32=int"]
        element = self.reply_in("replyInts", *forms)
        self.assertEqual(shown(element, "form"), ["ints"])
        self.assertEqual(shown(element, "int"), ["100", "-1", "70000"])

    def test_reportsAPreferenceThatItDoesNotUnderstand(self):
        for entry in ("32=floats", "x=ints", "ints", "32=error"):
            element = self.reply_in("replyInts", "-o", f"gqframe.reply_forms:33=bytes,{entry}")
            message = element.find("./field[@name='_ws.expert']").get("showname")
            self.assertTrue(message.endswith(f"Preference not understood: {entry}"), message)

    def test_describesErrorCodesInWords(self):
        for code, words in {
            -7: "-7, the server's own code",
            1: "1, a client reads it as success",
            0: "0, a client reads it as a time-out or a bad frame",
            -1: "-1, a client reads it as a dead link",
            -2: "-2, a client reads it as an error frame without a code",
            -5: "-5, a client reads it as a payload that is too short",
        }.items():
            data = bytearray(golden_bytes("error"))
            data[10:14] = code.to_bytes(4, "little", signed=True)
            capture = self.capture()
            Connection(capture, 40000).segment(bytes(data), False)
            element = self.tshark.read(capture.close())[0]
            self.assertEqual(field(element, "form").get("showname"), f"Form: error: {words}")
        self.assertIn("too short for a code", field(self.reply_in("errorShort"), "form").get("showname"))

    def test_isSelectedByItsPortPreference(self):
        capture = self.capture()
        Connection(capture, 40000).segment(golden_bytes("replyInt"), False)
        capture.datagram(golden_bytes("udpSetStateReply"), False, 40000)
        path = capture.close()
        fields = ["-T", "fields", "-e", "gqframe.command"]
        self.assertEqual(self.tshark.run("-r", path, *fields).split(), [])
        preference = ["-o", "gqframe.ports:4000,4999-5001"]
        self.assertEqual(self.tshark.run("-r", path, *preference, *fields).split(), ["0x20", "0x06"])

    def test_doesNotWaitForMoreThanTheLargestPayload(self):
        for largest, found in (("288767", "42"), ("288768", None)):
            capture = self.capture()
            Connection(capture, 40000).segment(golden_bytes("falseStart"), False)
            packet = self.tshark.read(capture.close(), "-o", f"gqframe.largest_payload:{largest}")[0]
            self.assertEqual(shown(packet, "int"), [found] if found else [])
            self.assertEqual(len(shown(packet, "large_length")), 1 if found else 0)

    def test_showsTheBeginningOfALongList(self):
        count = 1500
        items = {"ints": b"\5\0\0\0", "strings": b"\3\0\1\0a"}
        for form, item in items.items():
            data = count.to_bytes(4, "little") + count * item
            capture = self.capture()
            frame = b"\x68" + len(data).to_bytes(4, "little") + b"\0\0\0\0\x20" + data + b"\0\0\x16"
            Connection(capture, 40000).segment(frame, False)
            element = self.tshark.read(capture.close(), *given_form(form))[0]
            self.assertEqual(len(shown(element, "int" if form == "ints" else "text")), 1000)
            self.assertEqual(field(element, "count").get("showname"), "Count: 1500, at most 1000 are shown")


def fields_shown(element):
    """Returns names and values of the fields of records, in the order of the bytes."""
    result = []
    for each in element:
        name = each.get("name", "")
        if name == "gqframe.record":
            result += fields_shown(each)
        elif name.count(".") == 2:
            result.append((name.split(".")[2], each.get("show")))
    return result


OTHER_NAMES = {"(any byte)": "skipped"}
NO_FIELDS = ("count", "properties", "(zlib stream)")  # shown as count of a list, or not at all


def fields_decoded(form, path):
    """Returns names and values as `gqtool decode` prints them, named as the dissector does."""
    command = [os.environ["GQTOOL"], "decode", "--as", form, "--json", "--file", path]
    done = subprocess.run(command, capture_output=True, check=True, timeout=60)
    result = []
    kind = None
    for row in json.loads(done.stdout)["fields"]:
        name = re.sub(r"\[\d+\]$", "", row["name"]).split(".")[-1]
        name, value = OTHER_NAMES.get(name, name), row["value"]
        if name == "kind":
            kind = value
        if name == "intValue" and form.startswith(("variant", "property", "object")) and kind == 11:
            name = "timeValue"  # unsigned
        if isinstance(value, dict) and "stored" in value:
            result += [("stored", value["stored"]), ("samples", value["sample"])]
        elif name not in NO_FIELDS and value != "":
            result.append((name, value))
    return result


def is_same(shown_value, value):
    """Compares a value of tshark with one of gqtool."""
    if isinstance(value, (int, float)):
        return math.isclose(float(shown_value), value, rel_tol=1e-5, abs_tol=1e-40)
    if isinstance(value, dict) and "nan" in value:
        return math.isnan(float(shown_value))
    if isinstance(value, dict):  # bytes, or a text that tshark writes in its own way
        data = bytes.fromhex(value["hex"])
        return shown_value == data.hex(":") or len(shown_value) >= len(data.split(b"\0")[0].decode(errors="ignore"))
    return shown_value == value or value is None or math.isclose(float(shown_value), float(value))


class CommandMap(DissectorTest):
    def map(self, text):
        path = self.folder / "plant.map"
        path.write_text(text)
        return ["-o", f"gqframe.map:{path}"]

    def reply_in(self, data, *preferences):
        capture = self.capture()
        Connection(capture, 40000).segment(data, False)
        return frames(self.tshark.read(capture.close(), *preferences)[0])[0]

    def test_namesCommandsAndTheirForms(self):
        plant = self.map("# the plant\n0x20 levels int ints # of all tanks\n\t33\tpicture - bytes\r\n\n")
        capture = self.capture()
        connection = Connection(capture, 40000)
        connection.segment(golden_bytes("requestInt"), True)
        connection.segment(golden_bytes("replyInts"), False)
        packets = self.tshark.read(capture.close(), *plant)
        self.assertEqual([shown(packet, "name") for packet in packets], [["levels"], ["levels"]])
        self.assertEqual([shown(packet, "form") for packet in packets], [["int"], ["ints"]])
        self.assertEqual([shown(packet, "candidate") for packet in packets], [[], []])

    def test_yieldsToTheFormsOfAPreference(self):
        element = self.reply_in(golden_bytes("replyInts"), *self.map("0x20 levels int ints"), *given_form("bytes"))
        self.assertEqual(shown(element, "form"), ["ints"])  # the preference for all others
        element = self.reply_in(
            golden_bytes("replyInts"), *self.map("0x20 levels int ints"), "-o", "gqframe.reply_forms:0x20=bytes"
        )
        self.assertEqual(shown(element, "form"), ["bytes"])

    def test_reportsEachWrongLine(self):
        for line, message in {
            "0x20 levels int": "must be COMMAND NAME REQUEST REPLY, got 3 words",
            "256 levels int ints": "COMMAND must be an integer from 0 to 254, got '256'",
            "0xff levels int ints": "COMMAND must be an integer from 0 to 254, got '0xff'",
            "x20 levels int ints": "COMMAND must be an integer from 0 to 254, got 'x20'",
            "0x20 2levels int ints": "NAME must be a letter followed by letters, digits, '_', '.' or '-', got '2levels'",
            "0x20 levels bytes ints": "REQUEST must be -, int, intPair, ints or hex, got 'bytes'",
            "0x20 levels int floats": "REPLY must be int, ints, bytes, strings or bytes:FORM, got 'floats'",
            "0x20 levels int ints:wave": "REPLY must be int, ints, bytes, strings or bytes:FORM, got 'ints:wave'",
            "0x20 levels int bytes:waves": "REPLY has no form 'waves'; gqtool decode --list prints the forms",
            "0x21 others int ints": "COMMAND 0x21 is also in line 1",
            "0x20 other int ints": "NAME other is also in line 1",
        }.items():
            with self.subTest(line):
                element = self.reply_in(golden_bytes("replyInts"), *self.map(f"0x21 other int ints\n{line}\n"))
                text = element.find("./field[@name='_ws.expert']").get("showname")
                self.assertTrue(text.endswith(f"plant.map:2: {message}"), text)

    def test_reportsWrongLinesInTheFirstSummary(self):
        plant = self.map("0x20 levels int\n0x21 other int ints\n0x22 third int\n")
        capture = self.capture()
        connection = Connection(capture, 40000)
        connection.segment(golden_bytes("requestInt"), True)
        connection.segment(golden_bytes("replyInts"), False)
        path = capture.close()
        for passes in ([], ["-2"]):
            lines = self.tshark.text(path, *plant, *passes, "-T", "fields", "-e", "_ws.col.Info").splitlines()
            wrong = f"{self.folder}/plant.map:1: must be COMMAND NAME REQUEST REPLY, got 3 words"
            self.assertEqual(
                lines,
                [
                    f"command 0x20 request [preference not understood: {wrong}, and 1 more]",
                    "command 0x20 reply (does not match its request)",  # sequence 7, not 6
                ],
            )

    def test_showsTextsInTheEncodingOfAPreference(self):
        names = b"\xb9\xf8\xc2\xaf"  # in GBK: a boiler
        point = bytes(4) + bytes([len(names), 0]) + names + bytes(4 + 2 + 4)
        node = bytes(4) + bytes([3, 0]) + b"\xe9\x94\x85" + bytes(3 * 2 + 4 + 4 + 4 * 4 + 2 * 2)  # UTF-8
        for form, record, other, texts in (
            ("pointInfos", point, ["-o", "gqframe.encoding:GB18030"], ["\u9505\u7089", ""]),
            ("nodeHeads", node, ["-o", "gqframe.encoding:GB18030"], ["\u9505"]),  # as the library reads it
        ):
            with self.subTest(form):
                data = b"\1\0\0\0" + record
                payload = len(data).to_bytes(4, "little") + data
                frame = b"\x68" + len(payload).to_bytes(4, "little") + bytes([0, 0, 0, 0, 0x20]) + payload
                element = self.reply_in(frame + b"\0\0\x16", *self.map(f"0x20 list - bytes:{form}"), *other)
                self.assertEqual(shown(element, f"{form[:-1]}.text1"), texts[:1])

    def test_reportsAMissingFile(self):
        element = self.reply_in(golden_bytes("replyInts"), "-o", f"gqframe.map:{self.folder}/none")
        text = element.find("./field[@name='_ws.expert']").get("showname")
        self.assertTrue(text.endswith("/none: No such file or directory"), text)

    def test_showsTheFieldsOfEveryRecordLikeGqtool(self):
        files = sorted(GOLDEN.parent.glob("records/*.json")) + sorted(GOLDEN.parent.glob("waves/*.json"))
        commands = {}
        capture = self.capture()
        for number, path in enumerate(files):
            form = json.loads(path.read_text())["as"]
            command = commands.setdefault(form, 16 + len(commands))
            data = read_hex(path.with_suffix(".hex"))
            payload = len(data).to_bytes(4, "little") + data
            header = b"\x68" + len(payload).to_bytes(4, "little") + bytes([0, 0, 0, 0, command])
            Connection(capture, 20000 + number).segment(header + payload + b"\0\0\x16", False)
        listed = subprocess.run([os.environ["GQTOOL"], "decode", "--list", "--json"], capture_output=True, timeout=60)
        forms = {json.loads(line)["form"] for line in listed.stdout.splitlines()}
        self.assertEqual(forms - {"frames"}, set(commands))
        plant = self.map("".join(f"{command} {form} - bytes:{form}\n" for form, command in commands.items()))
        for path, packet in zip(files, self.tshark.read(capture.close(), *plant)):
            form = json.loads(path.read_text())["as"]
            with self.subTest(path.stem):
                element = frames(packet)[0]
                self.assertEqual(shown(element, "short_form"), [])
                found = [pair for pair in fields_shown(field(element, "records")) if pair[1] != ""]
                expected = fields_decoded(form, path.with_suffix(".hex"))
                self.assertEqual([name for name, _ in found], [name for name, _ in expected])
                for (name, one), (_, other) in zip(found, expected):
                    self.assertTrue(is_same(one, other), f"{name}: {one}, expected {other}")

    def test_showsTheFieldsBeforeTheEndOfACutRecord(self):
        data = read_hex(GOLDEN.parent / "records" / "pointInfos.hex")
        names = [name for name, _ in fields_decoded("pointInfos", GOLDEN.parent / "records" / "pointInfos.hex")]
        plant = self.map("0x20 points - bytes:pointInfos")
        capture = self.capture()
        for size in range(len(data) + 1):
            payload = size.to_bytes(4, "little") + data[:size]
            header = b"\x68" + len(payload).to_bytes(4, "little") + bytes([0, 0, 0, 0, 0x20])
            Connection(capture, 20000 + size).segment(header + payload + b"\0\0\x16", False)
        last = 0
        for size, packet in enumerate(self.tshark.read(capture.close(), *plant)):
            records = field(packet, "records")
            found = [] if records is None else [name for name, value in fields_shown(records) if value != ""]
            self.assertEqual(found, names[: len(found)])
            self.assertGreaterEqual(len(found), last)
            self.assertEqual(field(packet, "short_form") is not None, 0 < size < len(data), size)
            last = len(found)
        self.assertEqual(last, len(names))


class Conversation(DissectorTest):
    def test_pairsRepliesWithTheLatestRequest(self):
        capture = self.capture()
        connection = Connection(capture, 40000, opening=True)
        greeting = connection.segment(golden_bytes("greeting"), False)
        asked = connection.segment(golden_bytes("systemTimeRequest"), True)
        answer = connection.segment(golden_bytes("systemTimeReply"), False)
        unanswered = connection.segment(golden_bytes("requestInt"), True)
        asked_again = connection.segment(golden_bytes("requestInt"), True)
        first = connection.segment(golden_bytes("replyInts"), False)
        second = connection.segment(golden_bytes("replyInts"), False)
        other = Connection(capture, 40001).segment(golden_bytes("replyInts"), False)
        unclear = Connection(capture, SERVER).segment(golden_bytes("systemTimeReply"), False)
        packets = [None, *self.tshark.read(capture.close(), "-2")]

        self.assertEqual(shown(packets[greeting], "name"), ["greeting"])
        self.assertEqual(shown(packets[greeting], "form"), ["int"])
        self.assertEqual(shown(packets[asked], "name"), ["systemTime"])
        self.assertEqual(shown(packets[asked], "direction"), ["request"])
        self.assertEqual(shown(packets[answer], "direction"), ["reply"])
        for packet, name, expected in (
            (greeting, "request_in", []),
            (asked, "reply_in", [str(answer)]),
            (answer, "request_in", [str(asked)]),
            (answer, "reply_time", ["0.001000000"]),
            (unanswered, "reply_in", []),
            (asked_again, "reply_in", [str(first)]),
            (first, "request_in", [str(asked_again)]),
            (second, "request_in", [str(asked_again)]),
            (second, "reply_time", ["0.002000000"]),
            (other, "request_in", []),
            (other, "name", []),  # the capture does not have the opening of this connection
            (unclear, "direction", []),  # both ends have the server's port
            (unclear, "form", []),
            (unclear, "name", ["systemTime"]),
        ):
            with self.subTest(name, packet=packet):
                self.assertEqual(shown(packets[packet], name), expected)

    def test_marksAReplyThatDoesNotMatchItsRequest(self):
        def frame(sequence, command):
            return bytes([0x68, 0, 0, 0, 0, sequence, 0, 0, 0, command, 0, 0, 0x16])

        capture = self.capture()
        connection = Connection(capture, 40000)
        connection.segment(frame(7, 0x20), False)  # not asked for
        connection.segment(frame(7, 0x20), True)
        expected = [[], []]  # by packet
        differs = "Does not match its request, command 0x20 with sequence 7: a client takes it for the reply"
        for sequence, command, marks in (
            (7, 0x20, []),
            (0, 0x20, []),  # the server returns no sequence
            (7, 0xFF, []),  # an error frame
            (8, 0x20, []),  # the server counts its own frames
            (10, 0x20, [differs]),
            (7, 0x21, [differs]),
            (0, 0x21, [differs]),
            (9, 0xFF, [differs]),
        ):
            connection.segment(frame(sequence, command), False)
            expected.append(marks)
        capture.datagram(frame(7, 0x20), True, 40001)
        capture.datagram(frame(7, 0x21), False, 40001)
        expected += [[], [differs]]
        path = capture.close()
        for passes in ([], ["-2"]):
            marked = [
                [note.get("showname") for note in packet.iterfind(".//field[@name='_ws.expert.message']")]
                for packet in self.tshark.read(path, *passes)
            ]
            found = [[each for each in notes if differs in each] for notes in marked]
            self.assertEqual([len(each) for each in found], [len(each) for each in expected])
        lines = self.tshark.text(path, "-Y", "gqframe.mismatch", "-T", "fields", "-e", "_ws.col.Info").splitlines()
        self.assertEqual(lines[1], "command 0x21 reply (does not match its request)")
        self.assertEqual(len(lines), 5)

    def test_findsRequestsWithoutAReplyInTwoPasses(self):
        capture = self.capture()
        connection = Connection(capture, 40000, opening=True)
        connection.segment(golden_bytes("greeting"), False)
        asked = connection.segment(golden_bytes("systemTimeRequest"), True)
        connection.segment(golden_bytes("systemTimeReply"), False)
        unanswered = connection.segment(golden_bytes("requestInt"), True)
        path = capture.close()
        unmatched = ["-Y", 'gqframe.direction == "request" && !gqframe.reply_in', "-T", "fields", "-e", "frame.number"]
        self.assertEqual(self.tshark.text(path, "-2", *unmatched).split(), [str(unanswered)])
        # In a single pass the reply is still to come.
        self.assertEqual(self.tshark.text(path, *unmatched).split(), [str(asked), str(unanswered)])

    def test_showsAFrameThatAnEndCutsAtThePacketOfTheEnd(self):
        reply = golden_bytes("systemTimeReply")
        whole = {"length": 4, "sequence": 0x1234, "arg2": 0, "arg1": 0, "command": 2}
        capture = self.capture()
        expected = {}
        for end in (FIN, RST):
            for sizes in ([3], [9], [10], [13], [2, 5, 5], [1] * 14):
                connection = Connection(capture, 40000 + len(expected))
                connection.segment(golden_bytes("systemTimeRequest"), True)
                came = 0
                for size in sizes:
                    connection.segment(reply[came : came + size], False)
                    came += size
                available = {"header": reply[:came].hex()} if came < 10 else {**whole, "payload": reply[10:came].hex()}
                last = connection.segment(b"", False, end | ACK)
                expected[last] = {"offset": 0, **available, "fault": "cut"}
        path = capture.close()
        for passes in ([], ["-2"]):
            packets = enumerate(self.tshark.read(path, *passes), 1)
            cut = {number: part(frames(packet)[0]) for number, packet in packets if field(packet, "cut") is not None}
            self.assertEqual(cut, expected)

    def test_showsACutFrameWhoseLastSegmentEndsTheConnection(self):
        capture = self.capture()
        connection = Connection(capture, 40000)
        connection.segment(golden_bytes("systemTimeReply")[:11], False)
        connection.segment(golden_bytes("systemTimeReply")[11:13], False, FIN | ACK)
        packets = self.tshark.read(capture.close())
        self.assertIsNone(field(packets[0], "cut"))
        self.assertEqual(shown(packets[1], "payload"), ["3c:f1:53"])

    def test_showsNoCutFrameAfterAWholeOne(self):
        capture = self.capture()
        connection = Connection(capture, 40000)
        connection.segment(golden_bytes("systemTimeReply")[:11], False)
        connection.segment(golden_bytes("systemTimeReply")[11:], False)
        connection.segment(b"", False, FIN | ACK)
        self.assertEqual(self.tshark.text(capture.close(), "-Y", "gqframe.cut"), "")

    def test_marksAFrameThatFollowsAnotherInItsSegment(self):
        reply = golden_bytes("systemTimeReply")
        ways = {  # the segments, and which frames a client loses
            (2 * reply,): [False, True],
            (3 * reply,): [False, True, True],
            (reply, reply): [False, False],
            (reply[:5], reply[5:] + reply): [False, True],
            (reply[:5], reply[5:]): [False],
            (reply + reply[:5], reply[5:]): [False, True],
            (reply + reply[:12], reply[12:14], reply[14:] + reply): [False, True, True],
            (reply + reply[:12], reply[12:], reply): [False, True, False],
        }
        for passes in ([], ["-2"]):
            capture = self.capture()
            for port, segments in enumerate(ways, 40000):
                connection = Connection(capture, port)
                for segment in segments:
                    connection.segment(segment, False)
                connection.segment(2 * golden_bytes("systemTimeRequest"), True)  # a server may read it all
            found = {}
            for packet in self.tshark.read(capture.close(), *passes):
                for element in frames(packet):
                    if shown(element, "direction") == ["reply"]:
                        found.setdefault(client_port(packet), []).append(field(element, "lost") is not None)
                    else:
                        self.assertIsNone(field(element, "lost"))
            for port, (segments, lost) in enumerate(ways.items(), 40000):
                with self.subTest(passes=passes, segments=[segment.hex() for segment in segments]):
                    self.assertEqual(found[port], lost)

    def test_listsRequestsWithoutAReplyInOnePass(self):
        capture = self.capture()
        request, reply = golden_bytes("requestInt"), golden_bytes("replyInts")
        first = Connection(capture, 40000)
        missed = [first.segment(request, True)]
        shown_at = [first.segment(request, True)]  # the next request
        first.segment(reply, False)
        first.segment(b"", True, FIN | ACK)
        first.segment(b"", False, FIN | ACK)
        second = Connection(capture, 40001)
        missed.append(second.segment(request, True))
        second.segment(b"", True, FIN | ACK)  # a client that still waits
        shown_at.append(second.segment(b"", False, FIN | ACK))
        third = Connection(capture, 40002)
        missed.append(third.segment(request, True))
        shown_at.append(third.segment(b"", True, RST | ACK))
        fourth = Connection(capture, 40003)
        fourth.segment(request, True)
        fourth.segment(b"", True, FIN | ACK)
        fourth.segment(reply, False, FIN | ACK)
        capture.datagram(golden_bytes("udpRequestInts"), True, 40004)
        missed.append(capture.packets)
        shown_at.append(capture.datagram(golden_bytes("udpRequestInts"), True, 40004))
        path = capture.close()
        fields = ["-Y", "gqframe.unanswered", "-T", "fields", "-e", "frame.number", "-e", "gqframe.unanswered"]
        lines = [f"{at}\t{number}" for at, number in zip(shown_at, missed)]
        self.assertEqual(self.tshark.text(path, *fields).splitlines(), lines)
        self.assertEqual(self.tshark.text(path, "-2", *fields).splitlines(), lines)

    def test_summarisesEachPacketInOneLine(self):
        capture = self.capture()
        connection = Connection(capture, 40000)
        connection.segment(golden_bytes("setTimeRequest"), True)
        connection.segment(golden_bytes("twoFrames"), False)
        connection.segment(golden_bytes("error"), False)
        connection.segment(golden_bytes("wrongEnd")[:17], False)
        lines = self.tshark.text(capture.close(), "-T", "fields", "-e", "_ws.col.Info").splitlines()
        self.assertEqual(
            lines,
            [
                "setTime request",
                "systemState reply (does not match its request), "
                "systemTime reply (does not match its request) (lost)",
                "error -7 (does not match its request)",  # its sequence is 10, that of the request 3
                "frame with a wrong end",
            ],
        )


class BrokenInput(DissectorTest):
    """The dissector must not fail on any input. Tshark.run checks that."""

    def read(self, pieces):
        capture = self.capture()
        for number, data in enumerate(pieces):
            for is_request in (True, False):
                capture.datagram(data, is_request, 40000)
                connection = Connection(capture, 20000 + number)
                connection.segment(data[: len(data) // 2], is_request)
                connection.segment(data[len(data) // 2 :], is_request)
        path = capture.close()
        for form in (None, "intPair", *sorted(FORMS)):
            output = self.tshark.text(path, *given_form(form), *(WHOLE_PIECES if form == "strings" else []))
            self.assertIn("gqLib Frame", output)

    def test_endsAnywhere(self):
        names = ("setTimeRequest", "error", "replyInts", "replyBytes", "replyStringsOdd", "impossibleLength")
        self.read(golden_bytes(name)[:size] for name in names for size in range(1, len(golden_bytes(name))))

    def test_hasAnyPayloadLength(self):
        pieces = []
        for name in ("error", "replyInts", "replyStringsOdd", "replyStringsOverrun"):
            whole = golden_bytes(name)
            for size in range(len(whole) - 12):
                length = size.to_bytes(4, "little")
                pieces.append(whole[:1] + length + whole[5 : 10 + size] + b"\0\0\x16")
        self.read(pieces)

    def test_isRandom(self):
        chance = random.Random(1)
        pieces = []
        for _ in range(100):
            size = chance.randrange(60)
            payload = bytes(chance.choice((0, 0, 0, 1, 2, 3, 0x68, 0x16, chance.randrange(256))) for _ in range(size))
            command = chance.choice((1, 5, 6, 32, 255))
            frame = b"\x68" + size.to_bytes(4, "little") + bytes([0, 0, 0, 0, command]) + payload + b"\0\0\x16"
            pieces += [payload + b"h", frame, frame[:-1] + payload]
        self.read(pieces)

    def test_isRandomInEveryRecord(self):
        chance = random.Random(1)
        listed = subprocess.run([os.environ["GQTOOL"], "decode", "--list", "--json"], capture_output=True, timeout=60)
        forms = [json.loads(line)["form"] for line in listed.stdout.splitlines()]
        plant = self.folder / "plant.map"
        lines = [f"{number} {form} - bytes:{form}\n" for number, form in enumerate(forms, 16) if form != "frames"]
        plant.write_text("".join(lines))
        capture = self.capture()
        for number in range(16, 16 + len(forms)):
            for _ in range(30):
                size = chance.randrange(200)
                data = bytes(chance.choice((0, 0, 0, 1, 2, 5, 10, chance.randrange(256))) for _ in range(size))
                count = chance.choice((size, size, size, size + 1, size // 2)).to_bytes(4, "little")
                frame = b"\x68" + (size + 4).to_bytes(4, "little") + bytes([0, 0, 0, 0, number]) + count + data
                capture.datagram(frame + b"\0\0\x16", False, 40000)
        output = self.tshark.text(capture.close(), "-o", f"gqframe.map:{plant}")
        self.assertIn("Records: wave", output)

    def test_isCutByTheCapture(self):
        capture = self.capture()
        data = golden_bytes("udpSetTimeRequest")
        for kept in range(1, len(data)):
            capture.datagram(data, True, 40000, 8 + kept)
            Connection(capture, 40000 + kept).segment(data, True, kept=20 + kept)
        for packet in self.tshark.read(capture.close()):
            self.assertEqual(part(frames(packet)[0])["fault"], "cut")


class LiveCapture(DissectorTest):
    @staticmethod
    def started(capture):
        """Waits until the capture runs. If it ends first, returns its output."""
        said = ""
        for line in capture.stderr:
            said += line
            if "Capture started" in line:
                return None
        return said

    def test_showsACallToAStation(self):
        gqtool = os.environ["GQTOOL"]
        station = subprocess.Popen([gqtool, "station"], stdout=subprocess.PIPE, text=True)
        self.addCleanup(lambda: (station.kill(), station.communicate()))
        port = re.fullmatch(r"listening on 127\.0\.0\.1:(\d+)\n", station.stdout.readline()).group(1)

        capture = subprocess.Popen(
            [*self.tshark.command, "-i", "lo", "-f", f"tcp port {port}", "-d", f"tcp.port=={port},gqframe", "-l"]
            + ["-Y", "gqframe", "-T", "fields", "-e", "_ws.col.Info"],
            env=self.tshark.environment,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            text=True,
        )
        self.addCleanup(lambda: (capture.terminate(), capture.communicate(timeout=20)))
        said = self.started(capture)
        if said is not None:
            self.assertIn("ermission", said)
            self.skipTest("no permission to capture")

        call = subprocess.run([gqtool, "call", f"127.0.0.1:{port}", "systemTime"], capture_output=True, timeout=20)
        self.assertEqual(call.returncode, 0)
        lines = [capture.stdout.readline().strip() for _ in range(3)]
        self.assertEqual(lines, ["greeting", "systemTime request", "systemTime reply"])


if __name__ == "__main__":
    result = unittest.main(verbosity=2, exit=False).result
    skipped = 77  # exit code that scripts/test counts as skipped
    raise SystemExit(1 if not result.wasSuccessful() else skipped if result.skipped else 0)
