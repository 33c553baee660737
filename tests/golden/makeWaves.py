#!/usr/bin/env python3
"""Writes the files of waves/: python3 makeWaves.py

The blocks are compressed by Python's zlib. The samples of quantised waves are computed as fractions and rounded here, so
that they do not depend on the arithmetic of the processor.
"""

import struct
import zlib
from fractions import Fraction

from goldenFile import File, image, json_number

RAW, QUANTISED, COMPRESSED = 1, 2, 4
HEAD_BYTE = 0x5A
FILL1 = bytes(range(0xA0, 0xA0 + 30))
FILL2 = bytes(range(0xC0, 0xC0 + 40))

FLOATS = [i * 37 % 101 * 0.125 - 6.0 for i in range(40)]
SHORTS = [i * 7919 % 65536 - 32768 for i in range(64)]
USHORTS = [i * 7919 % 65536 for i in range(64)]
MARKS = [1, -2, 0x12345678]


def rounded(value, bits):
    """Rounds to this many significant bits; ties go to the even number."""
    if value == 0:
        return value
    unit = Fraction(1)
    while abs(value) >= unit * 2**bits:
        unit *= 2
    while abs(value) < unit * 2 ** (bits - 1):
        unit /= 2
    return round(value / unit) * unit


def restored(raw, upper, lower):
    """Returns a quantised sample: the quotient in double precision, all other steps in single."""
    quotient = rounded(rounded(Fraction(raw, 65535), 53), 24)
    return float(rounded(rounded(quotient * rounded(Fraction(upper) - Fraction(lower), 24), 24) + Fraction(lower), 24))


def scaled(raw, scale, offset):
    """Returns a raw sample: product and sum are each computed in double precision and rounded to single."""
    product = rounded(rounded(Fraction(raw) * Fraction(scale), 53), 24)
    return float(rounded(rounded(product + Fraction(offset), 53), 24))


def write_wave(name, title, flags, limits, stored, marks, following=b""):
    file = File("waves", name, "wave", title)
    file.add(bytes([HEAD_BYTE]), f"headByte {HEAD_BYTE}")
    file.add(bytes([flags]), f"waveFlags {flags}")
    file.add(FILL1, "headFill1")
    wave = {"headByte": HEAD_BYTE, "waveFlags": flags, "headFill1": {"hex": FILL1.hex()}}
    wave["limitHigh"] = file.number("f64", limits[0], "limitHigh")
    wave["limitLow"] = file.number("f64", limits[1], "limitLow")
    wave["sampleCount"] = file.number("u32", len(stored), "sampleCount")
    wave["markCount"] = file.number("u32", len(marks), "markCount")
    file.add(FILL2, "headFill2")
    wave["headFill2"] = {"hex": FILL2.hex()}
    wave["marks"] = [file.number("i32", mark, f"marks[{i}]") for i, mark in enumerate(marks)]

    kind = "<h" if flags & RAW else "<H" if flags & QUANTISED else "<f"
    images = [struct.pack(kind, number) for number in stored]
    if flags & COMPRESSED:
        block = b"".join(images)
        file.add(zlib.compress(block), f"{len(stored)} samples, {len(block)} bytes unpacked")
    else:
        for i, (data, number) in enumerate(zip(images, stored)):
            file.add(data, f"sample {i}: {number}")
    samples = stored
    if flags & (RAW | QUANTISED):
        wave["stored"] = stored
        restore = scaled if flags & RAW else restored
        samples = [restore(number, *limits) for number in stored]
    wave["samples"] = [json_number("f32", image("f32", sample)) for sample in samples]
    file.write(wave, following)


def write_both(name, title, flags, limits, stored, marks):
    write_wave(name, title, flags, limits, stored, marks)
    write_wave(f"{name}Packed", f"{title}, compressed", flags | COMPRESSED, limits, stored, marks)


if __name__ == "__main__":
    write_both("floats", "Floats", 0, (max(FLOATS), min(FLOATS)), FLOATS, MARKS)
    write_both("raw", "Raw values for value * 0.5 + 1", RAW, (0.5, 1.0), SHORTS, MARKS)
    write_both("quantised", "Samples quantised between -10 and 10", QUANTISED, (10.0, -10.0), USHORTS, MARKS)
    write_both("empty", "No samples, no marks", 0, (0.0, 0.0), [], [])
    write_wave("quantisedConstant", "All samples are 2.5", QUANTISED, (2.5, 2.5), [0, 0, 0], [])
    tenths = [-32768, -1, 0, 7, 32767]
    write_wave("rawTenths", "Raw values with a scale that is not exact in binary", RAW, (0.1, -0.3), tenths, [])
    write_wave("floatsOdd", "A byte after the last complete sample", 0, (1.5, -0.25), [1.5, -0.25], [], b"\x07")
