#!/usr/bin/env python3
"""Compares bytes with the JSON that describes them.

    check.py                        all files in this folder: records, waves and frames
    check.py FILE.hex FILE.json     one pair

Use it to check a program in any language against the files here:

- A reader: make it read records/floatRealDatas.hex and write the content as JSON, in the form of
  records/floatRealDatas.json. Then run: check.py records/floatRealDatas.hex mine.json
- A writer: make it read the values of records/floatRealDatas.json and write the bytes as hex digits.
  Then run: check.py mine.hex records/floatRealDatas.json

A .hex file has hex digits; blanks and text after a # are ignored. README.md in this folder documents the JSON. Each
difference is printed with its field and offset. Exit code: 0 no difference, 1 differences, 2 wrong usage. This is an
independent reader based on the layouts below; it does not use the library.
"""

import json
import math
import struct
import sys
import zlib
from pathlib import Path

# --- Layouts: the fields of each record in the order of the bytes -----------------------------------------------------
# u8 u16 u32 i32 f32 f64  a number; with *8, eight of them
# text                    its length in 2 bytes, then its bytes
# slot                    the same, padded with zero bytes to 258 bytes
# blob                    its length in 4 bytes, then its bytes
# skip                    a byte of any value, without a field
# variant, property       a record; with Slots, its texts in slots
# +NAME                   a list with a count of 2 bytes
# bytes30                 this many bytes

LAYOUTS = {
    "pointInfo": "pointId:u32 text1:text code1:u32 text2:text code2:u32",
    "floatPoint": "pointId:u32 text1:text code1:u32 text2:text text3:text text4:text code2:u32 code3:u32 code4:u32 "
    "text5:text switch1:u8 float1:f32 switch2:u8 code5:u32 code6:u32 float2:f32 code7:u32 levels:f32*8",
    "intPoint": "pointId:u32 text1:text code1:u32 text2:text text3:text text4:text code2:u32 code3:u32 code4:u32 "
    "text5:text switch1:u8 switch2:u8 code5:u32 code6:u32 code7:u32 code8:u32 levels:i32*8",
    "intPointWritten": "pointId:u32 text1:text code1:u32 text2:text text3:text text4:text code2:u32 code3:u32 "
    "switch0:u8 code4:u32 text5:text switch1:u8 switch2:u8 code5:u32 code6:u32 code7:u32 code8:u32 levels:i32*8",
    "boolPoint": "pointId:u32 text1:text code1:u32 text2:text text3:text code2:u32 code3:u32 code4:u32 text5:text "
    "switch1:u8 switch2:u8 code5:u32 code6:u32 switch3:u8",
    "blobPoint": "pointId:u32 text1:text code1:u32 text2:text text3:text text4:text code2:u32 code3:u32 code4:u32 "
    "text5:text switch1:u8 switch2:u8 code5:u32 code6:u32",
    "floatRealData": "pointId:u32 value:f32 stamp1:u32 stamp2:u32 flag2:u8 flag1:u8",
    "floatData": "value:f32 stamp1:u32 stamp2:u32 flag2:u8 flag1:u8",
    "intRealData": "pointId:u32 value:i32 stamp1:u32 stamp2:u32 flag1:u8 flag2:u8",
    "intData": "value:i32 stamp1:u32 stamp2:u32 flag1:u8 flag2:u8",
    "boolRealData": "pointId:u32 value:u8 stamp1:u32 stamp2:u32 flag1:u8",
    "boolData": "value:u8 stamp1:u32 stamp2:u32 flag1:u8",
    "pointRealData": "pointKind:u8 pointId:u32 value:f64 intValue:u32 stamp1:u32 stamp2:u32 flag1:u8 flag2:u8",
    "blobDataInfo": "pointId:u32 stamp1:u32 stamp2:u32 word4:u32 flag1:u8 flag2:u8",
    "blobRealData": "pointId:u32 stamp1:u32 stamp2:u32 flag1:u8 flag2:u8 bytes:blob",
    "blobData": "stamp1:u32 stamp2:u32 flag1:u8 flag2:u8 bytes:blob",
    "hisQuery": "pointId:u32 word1:u32 word2:u32 word3:u32 word4:u32 word5:u32 word6:u32",
    "oneSecQuery": "pointId:u32 word1:u32 word2:u32 word3:u32 word4:u32 text1:text",
    "eventInfo": "word1:u32 word2:u32 word3:u32 word4:u32 switch1:u8 switch2:u8 word5:u32 value:f64 word6:u32 "
    "word7:u32 word8:u32 word9:u32 word10:u32 switch3:u8 word13:u32 text1:text text2:text",
    "eventState": "word1:u32 switch1:u8 word2:u32 word3:u32 word4:u32",
    "property": "word1:i32 word2:i32 formatText:text valueText:text value:variant",
    "propertyBlob": "word1:i32 word2:i32 formatText:slot valueText:slot value:variantBlob",
    "object": "-:skip word1:i32 word2:i32 word3:i32 word4:i32 text1:text text2:text text3:text properties:+property",
    "objectBlob": "-:skip word1:i32 word2:i32 word3:i32 word4:i32 text1:slot text2:slot text3:slot "
    "properties:+propertyBlob",
    "nodeHead": "nodeId:i32 text1:text text2:text text3:text text4:text word1:i32 flag1:u8 flag2:u8 flag3:u8 flag4:u8 "
    "word2:i32 word3:i32 word4:i32 word5:i32 text5:text text6:text",
    "commItem": "commId:i32 text1:text text2:text text3:text flag1:u8 flag2:u8 text4:text word1:i32 text5:text",
    "ycItem": "flag1:u8 itemId:i32 text1:text text2:text text3:text text4:text flag2:u8 word1:i32 word2:i32 flag3:u8 "
    "coef1:f32 coef2:f32 coef3:f32 coef4:f32 word3:i32 flag4:u8 flag5:u8 text5:text",
    "yxItem": "itemId:i32 text1:text text2:text text3:text flag1:u8 word1:i32 word2:i32 flag2:u8 word3:i32 flag3:u8 "
    "flag4:u8 flag5:u8 flag6:u8 text4:text",
    "ydItem": "flag1:u8 itemId:i32 text1:text text2:text text3:text text4:text flag2:u8 flag3:u8 word1:i32 word2:i32 "
    "flag4:u8 flag5:u8 flag6:u8 flag7:u8 float1:f32 float2:f32 word3:i32 float3:f32 float4:f32 word4:i32 word5:i32 "
    "text5:text",
    "ybItem": "itemId:i32 text1:text text2:text text3:text word1:i32 word2:i32 flag2:u8 text4:text",
    "ybItemWritten": "itemId:i32 text1:text text2:text text3:text flag1:u8 word1:i32 word2:i32 flag2:u8 text4:text",
    "waveHead": "headByte:u8 waveFlags:u8 headFill1:bytes30 limitHigh:f64 limitLow:f64 sampleCount:u32 markCount:u32 "
    "headFill2:bytes40",
}

# A variant is its kind and, with these kinds, a value.
VARIANTS = {
    form: {0: "intValue:i32", 5: "floatValue:f32", 6: "doubleValue:f64", 10: f"textValue:{text}", 11: "intValue:u32"}
    for form, text in (("variant", "text"), ("variantBlob", "slot"))
}

WITHOUT_LIST = {"hisQuery", "oneSecQuery", "property", "propertyBlob", "object", "objectBlob", "waveHead"}


def list_name(record):
    """The form of a list: intPoints of intPoint, intPointsWritten of intPointWritten."""
    return record.replace("Written", "sWritten") if record.endswith("Written") else record + "s"


LISTS = {list_name(record): record for record in LAYOUTS if record not in WITHOUT_LIST}

NUMBERS = {"u8": "<B", "u16": "<H", "u32": "<I", "i32": "<i", "f32": "<f", "f64": "<d"}
SLOT_TEXT = 256  # bytes at most

RAW, QUANTISED, COMPRESSED = 1, 2, 4  # waveFlags


def fields(layout):
    return [field.split(":") for field in layout.split()]


# --- Bytes ------------------------------------------------------------------------------------------------------------


class Different(Exception):
    """Describes a fault and its place."""


class Float:
    """A float or double by its bits: -0 differs from 0, a NaN is equal to itself."""

    def __init__(self, image):
        self.image = image
        self.number = struct.unpack("<f" if len(image) == 4 else "<d", image)[0]

    def is_described_by(self, described):
        if isinstance(described, dict):
            return list(described) == ["nan"] and described["nan"] == self.image[::-1].hex()
        if isinstance(described, bool) or (isinstance(described, str) and described not in ("inf", "-inf", "-0")):
            return False
        try:
            return struct.pack("<f" if len(self.image) == 4 else "<d", float(described)) == self.image
        except OverflowError:
            return False

    def __repr__(self):
        return f"{self.number!r} ({self.image[::-1].hex()})"


class Reader:
    """Reads fields from bytes and records the offset of each."""

    def __init__(self, data):
        self.data = data
        self.at = 0
        self.offsets = {}

    def take(self, size, path):
        self.offsets.setdefault(path, self.at)
        if size > len(self.data) - self.at:
            raise Different(f"byte {self.at}: {path} needs {size} bytes, but only {len(self.data) - self.at} remain")
        self.at += size
        return self.data[self.at - size : self.at]

    def number(self, kind, path):
        image = self.take(struct.calcsize(NUMBERS[kind]), path)
        return Float(image) if kind in ("f32", "f64") else struct.unpack(NUMBERS[kind], image)[0]

    def value(self, kind, path):
        """Returns a field. Texts are returned as bytes."""
        if kind in NUMBERS:
            return self.number(kind, path)
        if "*" in kind:
            kind, count = kind.split("*")
            return [self.number(kind, f"{path}[{i}]") for i in range(int(count))]
        if kind == "text":
            return self.take(self.number("u16", path), path)
        if kind == "slot":
            start = self.at
            size = self.number("u16", path)
            if size > SLOT_TEXT:
                raise Different(f"byte {start}: {path} has {size} bytes, but at most {SLOT_TEXT} fit its slot")
            slot = self.take(SLOT_TEXT, path)
            if any(slot[size:]):
                raise Different(f"byte {start + 2 + size}: the slot after {path} must contain only zeros")
            return slot[:size]
        if kind == "blob":
            return self.take(self.number("u32", path), path)
        if kind.startswith("bytes"):
            return self.take(int(kind[5:]), path)
        if kind.startswith("+"):
            return self.items(kind[1:], self.number("u16", path), path)
        if kind in VARIANTS:
            number = self.number("u8", f"{path}.kind")
            return {"kind": number, **self.record(VARIANTS[kind].get(number, ""), path)}
        return self.record(LAYOUTS[kind], path)

    def record(self, layout, path):
        content = {}
        for name, kind in fields(layout):
            if kind == "skip":
                self.take(1, path)
            else:
                content[name] = self.value(kind, f"{path}.{name}")
        return content

    def items(self, record, count, path):
        return [self.value(record, f"{path}[{i}]") for i in range(count)]

    def rest(self):
        rest = self.data[self.at :]
        self.at = len(self.data)
        return rest


# --- Waves ------------------------------------------------------------------------------------------------------------


def single(number):
    """Rounds to single precision."""
    try:
        return struct.unpack("<f", struct.pack("<f", number))[0]
    except OverflowError:
        return math.copysign(math.inf, number)


def read_wave(reader):
    wave = reader.value("waveHead", "value")
    reader.offsets["value.marks"] = reader.at
    wave["marks"] = [reader.number("i32", f"value.marks[{i}]") for i in range(wave["markCount"])]
    block_start = reader.at
    if wave["marks"] and len(reader.data) - block_start < 96:
        raise Different(f"byte {block_start}: marks must be followed by at least 96 bytes of samples")
    block = reader.rest()
    following = b""
    if wave["waveFlags"] & COMPRESSED:
        stream = zlib.decompressobj()
        try:
            block = stream.decompress(block)
        except zlib.error as error:
            raise Different(f"byte {block_start}: not a zlib stream: {error}") from None
        if not stream.eof:
            raise Different(f"byte {block_start}: the zlib stream is truncated")
        following = stream.unused_data
    high, low = wave["limitHigh"].number, wave["limitLow"].number
    if wave["waveFlags"] & (RAW | QUANTISED):
        is_raw = wave["waveFlags"] & RAW
        count = len(block) // 2
        stored = struct.unpack(f"<{count}{'h' if is_raw else 'H'}", block[: 2 * count])
        wave["stored"] = list(stored)
        if is_raw:
            samples = [single(single(number * high) + low) for number in stored]
        else:
            low, spread = single(low), single(single(high) - single(low))
            samples = [single(single(single(number / 65535) * spread) + low) for number in stored]
        wave["samples"] = [Float(struct.pack("<f", sample)) for sample in samples]
        rest = block[2 * count :]
    else:
        count = len(block) // 4
        wave["samples"] = [Float(block[4 * i : 4 * i + 4]) for i in range(count)]
        rest = block[4 * count :]
    for name in ("stored", "samples"):
        reader.offsets[f"value.{name}"] = block_start
    return wave, following if wave["waveFlags"] & COMPRESSED else rest


# --- Frames -----------------------------------------------------------------------------------------------------------


START, END, ERROR = 0x68, 0x16, 0xFF
LARGEST_LENGTH = 2**31 - 14


def payload_form(command, described):
    """Returns the form of a payload, from its command and the transport, direction and form in the JSON."""
    is_request = described.get("direction") == "request"
    if command == ERROR and not is_request:
        return "error"
    if command == 5 and is_request:
        return "ints" if described.get("transport") == "udp" else "intPair"
    return "int" if command in (1, 2, 3, 5, 6) else described.get("form")


def read_strings(payload, count):
    """Returns the texts, whether all are complete, and the number of bytes read."""
    texts, at = [], 4
    for _ in range(count):
        if len(payload) - at < 2:
            return texts, False, at
        outer = int.from_bytes(payload[at : at + 2], "little")
        if len(payload) - at - 2 < outer:
            return texts, False, at
        item = payload[at + 2 : at + 2 + outer]
        size = int.from_bytes(item[:2], "little") if outer >= 2 else outer
        text = item[2 : 2 + size] if size + 2 <= outer else b""
        texts.append(text.split(b"\0")[0].decode(errors="replace"))
        at += 2 + outer
    return texts, True, at


def read_payload(payload, form):
    """Returns the members of a payload: form, content, rest, fault."""
    integers = lambda first, count: list(struct.unpack_from(f"<{count}i", payload, first))
    faulty = {"fault": "form"}
    if form is None:
        return {}
    if form in ("int", "error"):
        content, used = (integers(0, 1)[0], 4) if len(payload) >= 4 else (None, None)
    elif form == "intPair":
        content, used = (integers(0, 2), 8) if len(payload) >= 8 else (None, None)
    elif len(payload) < 4:
        content = None
    else:
        count = int.from_bytes(payload[:4], "little")
        if form == "strings":
            if len(payload) < 4 + 2 * count:
                return {"form": form, **faulty}
            content, whole, used = read_strings(payload, count)
            if not whole:
                return {"form": form, "content": content, **faulty}
        else:
            used = 4 + count * (4 if form == "ints" else 1)
            if len(payload) < used:
                return {"form": form, **faulty}
            content = integers(4, count) if form == "ints" else payload[4:used].hex()
    if content is None:
        return {"form": form, **faulty}
    rest = {"rest": len(payload) - used} if len(payload) > used else {}
    return {"form": form, "content": content, **rest}


def read_frames(data, described):
    parts, at = [], 0
    while at < len(data):
        start = data.find(START, at)
        if start != at:
            end = len(data) if start < 0 else start
            parts.append({"offset": at, "garbage": data[at:end].hex()})
            at = end
            continue
        if len(data) - at < 10:
            parts.append({"offset": at, "header": data[at:].hex(), "fault": "cut"})
            break
        length, sequence, arg2, arg1, command = struct.unpack_from("<IHBBB", data, at + 1)
        part = {"offset": at, "length": length}
        parts.append(part)
        if length > LARGEST_LENGTH:
            part["fault"] = "length"
            at += 1  # a false start byte: the next one may follow immediately
            continue
        part.update(sequence=sequence, arg2=arg2, arg1=arg1, command=command)
        at += 10
        frame = data[at : at + length + 3]
        at += len(frame)
        payload, check, end = frame[:length], frame[length : length + 2], frame[length + 2 :]
        part["payload"] = payload.hex()
        if check:
            part["check"] = check.hex()
        if not end:
            part["fault"] = "cut"
            continue
        part["end"] = end.hex()
        if end[0] != END:
            part["fault"] = "end"
        else:
            part.update(read_payload(payload, payload_form(command, described)))
    return parts


# --- Comparison -------------------------------------------------------------------------------------------------------


def text_bytes(described):
    """Returns the bytes of a text in JSON, or None."""
    if isinstance(described, str):
        return described.encode()
    try:
        return bytes.fromhex(described["hex"]) if list(described) == ["hex"] else None
    except (TypeError, ValueError):
        return None


def differences(read, described, path, offsets):
    """Yields the differences between what was read and what the JSON describes."""
    place = f"byte {offsets[path]}: {path}" if path in offsets else path
    if isinstance(read, dict):
        if not isinstance(described, dict):
            yield f"{path} is a record in the bytes, but the JSON has {described!r}"
            return
        for name in sorted(described.keys() - read.keys()):
            yield f"{path}.{name} is in the JSON, but not in the bytes"
        for name in read:
            if name in described:
                yield from differences(read[name], described[name], f"{path}.{name}", offsets)
            else:
                yield f"{path}.{name} is in the bytes, but not in the JSON"
        return
    if isinstance(read, list):
        if not isinstance(described, list):
            yield f"{place} is a list in the bytes, but the JSON has {described!r}"
            return
        if len(read) != len(described):
            yield f"{place} has {len(read)} items in the bytes, but {len(described)} in the JSON"
        for i, (item, described_item) in enumerate(zip(read, described)):
            yield from differences(item, described_item, f"{path}[{i}]", offsets)
        return
    if isinstance(read, Float):
        same = read.is_described_by(described)
    elif isinstance(read, bytes):
        same = text_bytes(described) == read
    else:
        same = type(read) is type(described) and read == described
    if not same:
        yield f"{place} is {read!r} in the bytes, but {described!r} in the JSON"


def read_hex(path):
    text = "".join(line.partition("#")[0] for line in path.read_text(encoding="utf-8").splitlines())
    return bytes.fromhex("".join(text.split()))


def check(hex_path, json_path):
    """Yields the faults of a pair, one line each."""
    try:
        data = read_hex(hex_path)
        described = json.loads(json_path.read_text(encoding="utf-8"))
    except (OSError, ValueError) as error:
        yield str(error)
        return
    if not isinstance(described, dict) or "as" not in described or "value" not in described:
        yield 'the JSON must be {"as": FORM, "value": ...}'
        return
    form = described["as"]
    if form == "frames":
        yield from differences(read_frames(data, described), described["value"], "value", {})
        return
    reader = Reader(data)
    try:
        if form == "wave":
            value, following = read_wave(reader)
        elif form in LISTS:
            value, following = reader.items(LISTS[form], reader.number("u32", "count"), "value"), reader.rest()
        elif form in LAYOUTS or form in VARIANTS:
            value, following = reader.value(form, "value"), reader.rest()
        else:
            yield f"unknown form {form!r}"
            return
    except Different as difference:
        yield str(difference)
        return
    yield from differences(value, described["value"], "value", reader.offsets)
    if (text_bytes(described["behind"]) if "behind" in described else b"") != following:
        yield f"{following.hex()!r} follows in the bytes, but {described.get('behind')!r} in the JSON"


def main(arguments):
    if arguments in (["-h"], ["--help"]):
        print(__doc__.strip())
        return 0
    if len(arguments) not in (0, 2) or any(argument.startswith("-") for argument in arguments):
        print("check.py: expected FILE.hex FILE.json or no arguments; see check.py --help", file=sys.stderr)
        return 2
    if arguments:
        pairs = [(Path(arguments[0]), Path(arguments[1]))]
    else:
        folder = Path(__file__).resolve().parent
        pairs = [(path, path.with_suffix(".json")) for path in sorted(folder.glob("*/*.hex"))]
        pairs += [(path.with_suffix(".hex"), path) for path in sorted(folder.glob("*/*.json"))
                  if not path.with_suffix(".hex").exists()]
    bad = 0
    for hex_path, json_path in pairs:
        wrong = list(check(hex_path, json_path))
        bad += bool(wrong)
        for line in wrong:
            print(f"{hex_path}: {line}")
    print(f"{len(pairs)} files, {bad} differ" if bad else f"{len(pairs)} files, no difference")
    return 1 if bad or not pairs else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
