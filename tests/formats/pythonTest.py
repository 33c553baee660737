#!/usr/bin/env python3
"""Reads the golden files of records, waves and single frames with the Python readers made from docs/formats/*.ksy, and
compares what they return with the JSON.

    pythonTest.py READERS     the folder of the Python readers
"""

import json
import re
import struct
import sys
from pathlib import Path

root = Path(__file__).resolve().parents[2]
golden = root / "tests/golden"
sys.path[:0] = [str(golden), sys.argv[1]]

from check import LAYOUTS, LISTS, NUMBERS, VARIANTS, Float, differences, fields, read_hex, text_bytes
from gq_frame import GqFrame
from gq_front_end_records import GqFrontEndRecords
from gq_records import GqRecords
from gq_wave import GqWave

TYPES = {
    "property": "PropertyData",
    "propertyBlob": "PropertyDataBlob",
    "object": "ObjectData",
    "objectBlob": "ObjectDataBlob",
}
PAYLOADS = {
    "int": lambda payload: payload.integer.value,
    "error": lambda payload: payload.error.code,
    "intPair": lambda payload: [payload.integer_pair.first, payload.integer_pair.second],
    "ints": lambda payload: payload.integers.items,
    "bytes": lambda payload: payload.bytes.items.hex(),
    "strings": lambda payload: [item.utf8 for item in payload.strings.items],
}


def reader(form):
    name = TYPES.get(form, form[0].upper() + form[1:])
    return getattr(GqRecords, name, None) or getattr(GqFrontEndRecords, name)


def member(record, name):
    return getattr(record, re.sub("[A-Z]", lambda letter: f"_{letter[0].lower()}", name))


def content(value, kind):
    """Returns a value in the form that check.py compares."""
    if "*" in kind:
        return [content(item, kind.partition("*")[0]) for item in value]
    if kind in ("f32", "f64"):
        return Float(struct.pack(NUMBERS[kind], value))
    if kind in ("text", "slot"):
        assert value.len_bytes == len(value.bytes)
        return value.bytes
    if kind in VARIANTS:
        of = dict(fields(VARIANTS[kind].get(value.kind, "")))
        names = {name: "seconds" if value.kind == 11 else name for name in of}
        return {"kind": value.kind, **{name: content(member(value, names[name]), of[name]) for name in of}}
    if kind.startswith("+"):
        return [content(item, kind[1:]) for item in value]
    if kind in LAYOUTS:
        return {name: content(member(value, name), of) for name, of in fields(LAYOUTS[kind]) if of != "skip"}
    return value  # an integer or bytes


def record_differences(data, form, described):
    record = reader(form).from_bytes(data)
    value = content(record.items, f"+{LISTS[form]}") if form in LISTS else content(record, form)
    yield from differences(value, described["value"], "value", {})
    if record._io.read_bytes_full() != text_bytes(described.get("behind", "")):
        yield "the bytes after the record differ from the JSON"


def wave_differences(data, described):
    wave = GqWave.from_bytes(data)
    samples = wave.block.samples
    value = content(wave, "waveHead") | {"marks": wave.marks}
    if wave.is_raw or wave.is_quantised:
        value["stored"] = [sample.raw if wave.is_raw else sample.quantised for sample in samples]
    wanted = described["value"].pop("samples")
    yield from differences(value, described["value"], "value", {})
    allowed = max(1, abs(wave.limit_high), abs(wave.limit_low)) * (2**-7 if wave.is_raw else 2**-22)
    if len(samples) != len(wanted) or any(abs(s.value - w) > allowed for s, w in zip(samples, wanted)):
        yield f"the samples are {[sample.value for sample in samples]}, but {wanted} in the JSON"


def frame_differences(data, described):
    """Of files without faults."""
    frames = [part.frame for part in GqFrame.Frames.from_bytes(data).parts if hasattr(part, "frame")]
    wanted = [part for part in described["value"] if "garbage" not in part]
    if len(frames) != len(wanted):
        yield f"{len(frames)} frames in the bytes, but {len(wanted)} in the JSON"
    for i, (frame, part) in enumerate(zip(frames, wanted)):
        value = {name: getattr(frame, name) for name in ("length", "sequence", "arg2", "arg1", "command")}
        value.update(payload=frame.payload.content.hex(), check=frame.checksum.hex(), end=frame.end_byte.hex())
        if "form" in part:
            value["content"] = PAYLOADS[part["form"]](frame.payload)
        part = {name: part[name] for name in part if name not in ("offset", "form", "rest")}
        yield from differences(value, part, f"value[{i}]", {})


bad = count = 0
for path in sorted(golden.glob("*/*.json")):
    described = json.loads(path.read_text(encoding="utf-8"))
    data = read_hex(path.with_suffix(".hex"))
    form = described["as"]
    if form == "frames":
        if any("fault" in part for part in described["value"]):
            continue
        found = frame_differences(data, described)
    else:
        found = wave_differences(data, described) if form == "wave" else record_differences(data, form, described)
    lines = list(found)
    count += 1
    bad += bool(lines)
    for line in lines:
        print(f"{path.relative_to(golden)}: {line}")
print(f"{count} files, {bad} differ" if bad else f"{count} files, no difference")
sys.exit(1 if bad or not count else 0)
