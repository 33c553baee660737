#!/usr/bin/env python3
"""Shared by the scripts that write golden files: a file of bytes and its JSON, written together."""

import json
import struct
from pathlib import Path

from check import NUMBERS


def image(kind, number):
    """Returns the bytes of a number. A NaN is given by its bits."""
    if kind in ("f32", "f64") and isinstance(number, int):
        return number.to_bytes(4 if kind == "f32" else 8, "little")
    return struct.pack(NUMBERS[kind], number)


def json_number(kind, data):
    """Returns a number in the form used in the JSON."""
    number = struct.unpack(NUMBERS[kind], data)[0]
    if kind not in ("f32", "f64"):
        return number
    if number != number:
        return {"nan": data[::-1].hex()}
    if abs(number) == float("inf"):
        return "inf" if number > 0 else "-inf"
    if data[-1] == 0x80 and number == 0:
        return "-0"
    for digits in range(1, 18):  # until a reader using double precision gets the same number
        shortest = float(f"{number:.{digits}g}")
        try:
            if image(kind, shortest) == data:
                return shortest
        except OverflowError:
            pass  # rounded up beyond the largest float


def json_text(data):
    """Returns a text or bytes in the form used in the JSON."""
    try:
        text = data.decode()
    except UnicodeDecodeError:
        return {"hex": data.hex()}
    is_plain = all(ord(c) >= 0x20 and not 0x7F <= ord(c) < 0xA0 for c in text)
    return text if is_plain else {"hex": data.hex()}


class File:
    def __init__(self, folder, name, form, title):
        self.path = Path(__file__).parent / folder / name
        self.form = form
        self.title = title
        self.lines = []
        self.offset = 0

    def add(self, data, meaning):
        """Adds bytes and their meaning, in lines of 32 bytes."""
        for start in range(0, len(data), 32):
            part = data[start : start + 32]
            self.lines.append((part.hex(), f"{self.offset:>4} {meaning if start == 0 else ''}".rstrip()))
            self.offset += len(part)

    def number(self, kind, number, name):
        data = image(kind, number)
        value = json_number(kind, data)
        self.add(data, f"{name} {json.dumps(value, ensure_ascii=False)}")
        return value

    def write(self, value, following=b""):
        """Writes both files. `following` are bytes after the record that belong to no field."""
        self.add(following, "after the record")
        width = max(len(digits) for digits, _ in self.lines)
        lines = [f"# {self.title}"] + [f"{digits:<{width}} # {note}" for digits, note in self.lines]
        self.path.with_suffix(".hex").write_text("\n".join(lines) + "\n", encoding="utf-8")

        def shown(value):
            return json.dumps(value, ensure_ascii=False)

        text = "[\n  " + ",\n  ".join(map(shown, value)) + "\n ]" if isinstance(value, list) else shown(value)
        if following:
            text += f',\n "behind": {shown(json_text(following))}'
        self.path.with_suffix(".json").write_text(f'{{"as": "{self.form}",\n "value": {text}}}\n', encoding="utf-8")
