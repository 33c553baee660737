#!/usr/bin/env python3
"""Writes the files of records/: python3 makeRecords.py

A file for each record and for each list, by the layouts in check.py. A record alone has a value of its own in every
field, with no two bytes alike as far as they last. A list has three items: such values, the bounds of each kind of
field, and nothing but zeros and empty texts.
"""

import json
import struct
from pathlib import Path

from check import LAYOUTS, LISTS, NUMBERS, VARIANTS, fields
from goldenFile import File, json_text

FOLDER = Path(__file__).parent / "records"

INFINITY = float("inf")
NAN, NEGATIVE_NAN = 0x7FC00001, 0xFFC12345
FRONT_END = ("nodeHead", "commItem", "ycItem", "yxItem", "ydItem", "ybItem")


# --- Values -----------------------------------------------------------------------------------------------------------


class Distinct:
    """Distinct bytes, positive and negative numbers, texts of all kinds."""

    kinds = (0, 5, 6, 10, 11, 101)  # of the properties of an object

    def __init__(self, is_utf8):
        self.byte = 0
        self.turns = {}
        self.texts = [b"pump", "Größe".encode(), b"", "压力 °C".encode(), b'"\\/', "\U0001f600".encode()]
        self.texts.append(b"\x01tab\t" if is_utf8 else b"\xff\x00\xfe")

    def turn(self, name, choices):
        self.turns[name] = self.turns.get(name, -1) + 1
        return choices[self.turns[name] % len(choices)]

    def number(self, kind):
        if kind == "f32":
            return self.turn(kind, (0.1, -10.25, 123456.789, 7.038531e-26, 1.17549435e-38))
        if kind == "f64":
            return self.turn(kind, (-0.1, 1.7976931348623157e300))
        size = struct.calcsize(NUMBERS[kind])
        data = bytearray()
        for _ in range(size):
            self.byte = self.byte % 250 + 1
            data.append(self.byte)
        if kind == "i32" and self.turn("sign", (False, True)):
            data[-1] |= 0x80
        return int.from_bytes(data, "little", signed=kind == "i32")

    def text(self):
        return self.turn("text", self.texts)

    def blob(self):
        return self.turn("blob", (bytes.fromhex("0001feff68"), b"abc"))

    slot = text


class Bounds(Distinct):
    """The bounds of each range; lengths that need their second byte."""

    RANGES = {"u8": (255, 127, 128), "u32": (2**32 - 1, 2**31, 2**31 - 1), "i32": (-(2**31), 2**31 - 1, -1)}
    FLOATS = (3.4028234663852886e38, -3.4028234663852886e38, 1e-45, -0.0, INFINITY, -INFINITY, NAN, NEGATIVE_NAN)
    DOUBLES = (5e-324, -1.7976931348623157e308, -INFINITY, -0.0, 0x7FF8000000000001)

    def number(self, kind):
        return self.turn(kind, {**self.RANGES, "f32": self.FLOATS, "f64": self.DOUBLES}[kind])

    def text(self):
        return self.turn("text", ("ß".encode() * 150, b"", b"x" * 255))

    def slot(self):
        return self.turn("slot", (b"s" * 256, "ß".encode() * 128, b""))

    def blob(self):
        return bytes(range(256)) + b"\x00"


class Empty(Distinct):
    kinds = ()

    def number(self, kind):
        return 0.0 if kind in ("f32", "f64") else 0

    def text(self):
        return b""

    slot = blob = text


# --- Bytes and JSON ---------------------------------------------------------------------------------------------------


class RecordFile(File):
    def __init__(self, name, form, title):
        super().__init__("records", name, form, title)

    def value(self, kind, values, name):
        if "*" in kind:
            kind, count = kind.split("*")
            return [self.number(kind, values.number(kind), f"{name}[{i}]") for i in range(int(count))]
        if kind in NUMBERS:
            return self.number(kind, values.number(kind), name)
        if kind in ("text", "slot", "blob"):
            data = getattr(values, kind)()
            self.add(len(data).to_bytes(4 if kind == "blob" else 2, "little"), f"{name}, {len(data)} bytes")
            value = json_text(data)
            padding = bytes(256 - len(data)) if kind == "slot" else b""
            self.add(data + padding, json.dumps(value, ensure_ascii=False)[:50])
            return value
        if kind.startswith("+"):
            self.add(len(values.kinds).to_bytes(2, "little"), f"{name}, {len(values.kinds)} items")
            return [self.record(kind[1:], values, f"{name}[{i}]", number) for i, number in enumerate(values.kinds)]
        raise ValueError(kind)

    def variant(self, form, values, name, number):
        self.add(bytes([number]), f"{name}kind {number}")
        content = {"kind": number}
        for field, kind in fields(VARIANTS[form].get(number, "")):
            content[field] = self.value(kind, values, f"{name}{field}")
        return content

    def record(self, form, values, name="", variant_kind=0):
        content = {}
        name = f"{name}." if name else ""
        if form in VARIANTS:
            return self.variant(form, values, name, variant_kind)
        for field, kind in fields(LAYOUTS[form]):
            if kind == "skip":
                self.add(b"\0", "ignored")
            elif kind in VARIANTS:
                content[field] = self.variant(kind, values, f"{name}{field}.", variant_kind)
            else:
                content[field] = self.value(kind, values, name + field)
        return content


class CommItemTexts:
    """In a list that the library can read, text4, the fourth text of a CommItem, has 2 bytes."""

    def __init__(self, values, is_in_list):
        self.values = values
        self.is_in_list = is_in_list
        self.texts = 0
        values.turn("text", values.texts)  # so that text3 is not empty

    def number(self, kind):
        return self.values.number(kind)

    def text(self):
        self.texts += 1
        return "é".encode() if self.texts == 4 and self.is_in_list else self.values.text()


def filler(count):
    return bytes(0xE0 + i % 16 for i in range(count))


def bytes_needed_after(form, items):
    """Returns the bytes that the library's reader needs after the last record."""
    if form == "commItem":
        return filler(max(len(item["text3"].encode()) for item in items))
    return filler(1 if form == "oneSecQuery" else 0)


def is_front_end(form):
    return form.removesuffix("Written") in FRONT_END


def write_one(form, name=None, values=None, title=None, variant_kind=0):
    file = RecordFile(name or form, form, title or f"{form}: a distinct value in every field")
    values = values or Distinct(is_front_end(form))
    if form == "commItem":
        values = CommItemTexts(values, False)
    value = file.record(form, values, variant_kind=variant_kind)
    file.write(value, bytes_needed_after(form, [value]))


def write_list(form):
    record = LISTS[form]
    file = RecordFile(form, form, f"{form}: distinct values, bounds, empty")
    sources = [kind(is_front_end(record)) for kind in (Distinct, Bounds, Empty)]
    if record == "commItem":
        sources = [CommItemTexts(values, True) for values in sources]
    file.add(len(sources).to_bytes(4, "little"), f"count {len(sources)}")
    value = [file.record(record, values, f"[{i}]") for i, values in enumerate(sources)]
    file.write(value, filler(1) if form == "intPoints" else bytes_needed_after(record, value))


def write_empty_list(form, wanted):
    title = f"{form}: an empty list, and the bytes that the library's reader needs after it"
    file = RecordFile(f"{form}Empty", form, title)
    file.add(bytes(4), "count 0")
    file.write([], filler(wanted))


if __name__ == "__main__":
    FOLDER.mkdir(exist_ok=True)
    for stale in FOLDER.iterdir():
        stale.unlink()
    for form in LAYOUTS:
        if form not in ("blobData", "waveHead"):
            write_one(form)
    for form in LISTS:
        write_list(form)
    for form in ("oneSecQuery", "hisQuery"):
        write_one(form, f"{form}Bounds", Bounds(False), f"{form}: the bounds of each field")
    for form, kinds in VARIANTS.items():
        for number in (*kinds, 101):
            what = {0: "Int", 5: "Float", 6: "Double", 10: "Text", 11: "Time", 101: "Other"}[number]
            write_one(form, f"{form}{what}", title=f"{form} of kind {number}", variant_kind=number)
            if number != 101:
                write_one(form, f"{form}{what}Bounds", Bounds(False), f"{form} of kind {number}, a bound", number)
    for form in ("property", "propertyBlob", "object", "objectBlob"):
        write_one(form, f"{form}Bounds", Bounds(False), f"{form}: the bounds of each field", 10)
        write_one(form, f"{form}Empty", Empty(False), f"{form}: empty")
    for form in ("floatRealDatas", "intRealDatas"):
        write_empty_list(form, 18)
    for form in ("floatDatas", "intDatas", "boolRealDatas", "boolDatas", "blobDatas"):
        write_empty_list(form, 14)
    for form in ("pointInfos", "ycItems"):
        write_empty_list(form, 0)
    title = "boolDatas: one item, and the bytes that the library's reader needs after it"
    file = RecordFile("boolDatasOne", "boolDatas", title)
    file.add((1).to_bytes(4, "little"), "count 1")
    file.write([file.record("boolData", Distinct(False), "[0]")], filler(4))
