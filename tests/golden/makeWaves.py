#!/usr/bin/env python3
"""Writes the stored waves of this folder: python3 makeWaves.py

Each file holds one wave, a field a line with its offset; what follows a # is comment. The compressed blocks are the
work of Python's zlib. The expected samples of the quantised wave are computed in fractions and rounded here, so that
they owe nothing to the arithmetic of the processor.
"""

import struct
import zlib
from fractions import Fraction
from pathlib import Path

FOLDER = Path(__file__).parent

RAW, QUANTISED, COMPRESSED = 1, 2, 4
HEAD_BYTE = 0x5A
FILL1 = bytes(range(0xA0, 0xA0 + 30))
FILL2 = bytes(range(0xC0, 0xC0 + 40))

FLOATS = [i * 37 % 101 * 0.125 - 6.0 for i in range(40)]
SHORTS = [i * 7919 % 65536 - 32768 for i in range(64)]
USHORTS = [i * 7919 % 65536 for i in range(64)]
MARKS = [1, -2, 0x12345678]


def rounded(value, bits):
    """The nearest number of so many significant bits, of two as near the even one."""
    if value == 0:
        return value
    unit = Fraction(1)
    while abs(value) >= unit * 2**bits:
        unit *= 2
    while abs(value) < unit * 2 ** (bits - 1):
        unit /= 2
    return round(value / unit) * unit


def restored(raw, upper, lower):
    """A quantised sample: the quotient in double precision, then everything in single."""
    quotient = rounded(rounded(Fraction(raw, 65535), 53), 24)
    return float(rounded(rounded(quotient * rounded(Fraction(upper) - Fraction(lower), 24), 24) + Fraction(lower), 24))


class File:
    def __init__(self, title):
        self.lines = [f"# {title}"]
        self.offset = 0

    def add(self, data, meaning):
        for start in range(0, max(len(data), 1), 16):
            part = data[start : start + 16]
            note = meaning if start == 0 else ""
            self.lines.append(f"{part.hex():<32} # {self.offset:>3} {note}".rstrip())
            self.offset += len(part)

    def write(self, name):
        (FOLDER / name).write_text("\n".join(self.lines) + "\n")


def write_wave(name, title, flags, limits, samples, layout, marks):
    file = File(title)
    file.add(bytes([HEAD_BYTE]), "headByte")
    file.add(bytes([flags]), "waveFlags")
    file.add(FILL1, "headFill1")
    file.add(struct.pack("<d", limits[0]), f"limitHigh {limits[0]}")
    file.add(struct.pack("<d", limits[1]), f"limitLow {limits[1]}")
    file.add(struct.pack("<I", len(samples)), f"sampleCount {len(samples)}")
    file.add(struct.pack("<I", len(marks)), f"markCount {len(marks)}")
    file.add(FILL2, "headFill2")
    for i, mark in enumerate(marks):
        file.add(struct.pack("<i", mark), f"mark {i}: {mark}")
    if flags & COMPRESSED:
        block = b"".join(struct.pack(layout, sample) for sample in samples)
        file.add(zlib.compress(block), f"{len(samples)} samples, {len(block)} bytes unpacked")
    else:
        for i, sample in enumerate(samples):
            file.add(struct.pack(layout, sample), f"sample {i}: {sample}")
    file.write(name)


float_limits = (max(FLOATS), min(FLOATS))
write_wave("waveFloats.hex", "Floats", 0, float_limits, FLOATS, "<f", MARKS)
write_wave("waveFloatsPacked.hex", "Floats, compressed", COMPRESSED, float_limits, FLOATS, "<f", MARKS)

line = (0.5, 1.0)
write_wave("waveRaw.hex", "Raw values for value * 0.5 + 1", RAW, line, SHORTS, "<h", MARKS)
write_wave("waveRawPacked.hex", "The same, compressed", RAW | COMPRESSED, line, SHORTS, "<h", MARKS)

range_ = (10.0, -10.0)
write_wave("waveQuantised.hex", "Samples quantised between -10 and 10", QUANTISED, range_, USHORTS, "<H", MARKS)
write_wave("waveQuantisedPacked.hex", "The same, compressed", QUANTISED | COMPRESSED, range_, USHORTS, "<H", MARKS)

samples = File("The samples of the quantised wave: floats")
for raw in USHORTS:
    sample = restored(raw, *range_)
    samples.add(struct.pack("<f", sample), f"{raw} is {sample:.9g}")
samples.write("waveQuantisedSamples.hex")
