// Reads every golden file with the readers made from docs/formats/*.ksy and compares what they return with its JSON,
// field by field. Numbers are compared by their bits, texts and bytes as bytes.
//   node goldenTest.js READERS      the folder of the JavaScript readers, made with offsets
"use strict";

const fs = require("fs");
const path = require("path");
const KaitaiStream = require("kaitai-struct/KaitaiStream");
const { load } = require("../../examples/makeReaders.js");

const golden = path.join(__dirname, "../golden");
const formats = path.join(__dirname, "../../docs/formats");
const readers = path.resolve(process.argv[2]);

const hex = (bytes) => Buffer.from(bytes).toString("hex");
const camel = (name) => name.replace(/_(\w)/g, (_, letter) => letter.toUpperCase());
const snake = (name) => name.replace(/[A-Z]/g, (letter) => `_${letter.toLowerCase()}`);
const className = (type) => camel(`_${type}`);

// --- Types of the descriptions --------------------------------------------------------------------------------------

const { GqFrame } = require(path.join(readers, "GqFrame.js"));
const { GqWave } = require(path.join(readers, "GqWave.js"));
const types = {}; // by the name of a record: its fields and its reader
for (const file of ["gq_records", "gq_front_end_records"]) {
    const reader = require(path.join(readers, `${className(file)}.js`))[className(file)];
    for (const [name, type] of Object.entries(load(formats, file).types))
        types[name] = { fields: type.seq, Reader: reader[className(name)] };
}
types.gq_text = { fields: load(formats, "gq_text").seq };

// Names in the JSON that differ from those of the types.
const typeOfForm = {
    property: "property_data",
    propertyBlob: "property_data_blob",
    object: "object_data",
    objectBlob: "object_data_blob",
};

// Fields that the JSON does not have: its arrays and strings have their sizes.
const unlisted = new Set(["count", "property_count", "len_bytes", "ignored"]);

// --- Records --------------------------------------------------------------------------------------------------------

function imageAt(io, { start, end }) {
    const pos = io.pos;
    io.seek(start);
    const image = io.readBytes(end - start);
    io.seek(pos);
    return image;
}

// Returns the bytes of a text in JSON, or undefined.
function textBytes(described) {
    if (typeof described === "string")
        return Buffer.from(described);
    return typeof described?.hex === "string" ? Buffer.from(described.hex, "hex") : undefined;
}

// Returns the bytes of a float or double in JSON, or undefined.
function floatImage(described, size) {
    if (described?.nan !== undefined)
        return Buffer.from(described.nan, "hex").reverse();
    const number = { inf: Infinity, "-inf": -Infinity, "-0": -0 }[described] ?? described;
    if (typeof number !== "number")
        return undefined;
    const image = Buffer.alloc(size);
    size === 4 ? image.writeFloatLE(number) : image.writeDoubleLE(number);
    return image;
}

function* textDifferences(text, described, at) {
    const bytes = textBytes(described);
    if (bytes === undefined || text.lenBytes !== bytes.length || hex(text.bytes) !== hex(bytes))
        yield `${at} is ${text.lenBytes} bytes ${hex(text.bytes)}, but ${JSON.stringify(described)} in the JSON`;
    else if (typeof described === "string" && text.utf8 !== described)
        yield `${at}.utf8 is ${JSON.stringify(text.utf8)}, but ${JSON.stringify(described)} in the JSON`;
    if (text.padding?.some((byte) => byte !== 0))
        yield `${at} is followed by ${hex(text.padding)} in its slot, must be zeros`;
}

// Compares one value of a field.
//   owner, place   the object that contains it, and its first and last offset there
function* valueDifferences(value, field, owner, place, described, at) {
    if (field.type === "gq_text" || field.type === "slot")
        yield* textDifferences(value, described, at);
    else if (field.type in types)
        yield* recordDifferences(value, types[field.type].fields, described, at);
    else {
        let same;
        if (field.type === undefined)
            same = textBytes(described) !== undefined && hex(value) === hex(textBytes(described));
        else if (field.type.startsWith("f")) {
            const image = imageAt(owner._io, place);
            const wanted = floatImage(described, Number(field.type[1]));
            same = wanted !== undefined && hex(image) === hex(wanted) && Object.is(value, readFloat(image));
        } else
            same = value === described;
        if (!same)
            yield `byte ${place.start}: ${at} is ${value}, but ${JSON.stringify(described)} in the JSON`;
    }
}

function readFloat(image) {
    const bytes = Buffer.from(image);
    return image.length === 4 ? bytes.readFloatLE() : bytes.readDoubleLE();
}

function* recordDifferences(record, fields, described, at) {
    const left = new Set(Object.keys(described));
    for (const field of fields) {
        let name = camel(field.id);
        const value = record[name];
        const place = record._debug[name];
        if (unlisted.has(field.id) || value === undefined) // a variant has the value of its kind only
            continue;
        if (name === "seconds")
            name = "intValue"; // the name for an integer of either kind
        if (!left.delete(name))
            yield `${at}.${name} is in the bytes, but not in the JSON`;
        else if (field.repeat)
            yield* arrayDifferences(value, field, record, place, described[name], `${at}.${name}`);
        else
            yield* valueDifferences(value, field, record, place, described[name], `${at}.${name}`);
    }
    for (const name of left)
        yield `${at}.${name} is in the JSON, but not in the bytes`;
}

function* arrayDifferences(values, field, owner, place, described, at) {
    if (values.length !== described.length)
        yield `${at} has ${values.length} items, but ${described.length} in the JSON`;
    for (let i = 0; i < Math.min(values.length, described.length); ++i)
        yield* valueDifferences(values[i], field, owner, place.arr[i], described[i], `${at}[${i}]`);
}

function* recordFileDifferences(io, { as: form, value: described, behind = "" }) {
    const type = types[typeOfForm[form] ?? snake(form)];
    const record = new type.Reader(io);
    record._read();
    const items = type.fields.find((field) => field.id === "items");
    if (items !== undefined)
        yield* arrayDifferences(record.items, items, record, record._debug.items, described, "value");
    else
        yield* recordDifferences(record, type.fields, described, "value");
    yield* remainderDifferences(io.readBytesFull(), behind);
}

function* remainderDifferences(remainder, behind) {
    if (hex(remainder) !== hex(textBytes(behind)))
        yield `${hex(remainder) || "nothing"} follows, but ${JSON.stringify(behind)} in the JSON`;
}

// --- Waves ----------------------------------------------------------------------------------------------------------

// Returns a sample that is rounded as docs/formats/wave.md describes.
function roundedSample(wave, { raw, quantised, plain }) {
    const round = Math.fround;
    if (wave.isRaw)
        return round(round(raw * wave.limitHigh) + wave.limitLow);
    const low = round(wave.limitLow);
    return wave.isQuantised
        ? round(round(round(quantised / 65535) * round(round(wave.limitHigh) - low)) + low)
        : plain;
}

function* waveDifferences(io, { value: { stored, samples, ...head }, behind = "" }) {
    const wave = new GqWave(io);
    wave._read();
    const fields = load(formats, "gq_wave").seq.filter((field) => !field.id.endsWith("_block"));
    yield* recordDifferences(wave, fields, head, "value");

    const read = wave.block.samples;
    const numbers = wave.isRaw ? read.map((s) => s.raw) : wave.isQuantised ? read.map((s) => s.quantised) : undefined;
    if (JSON.stringify(numbers) !== JSON.stringify(stored))
        yield `value.stored is ${numbers}, but ${stored} in the JSON`;
    if (read.length !== samples.length)
        yield `value.samples has ${read.length} items, but ${samples.length} in the JSON`;
    const range = Math.max(1, Math.abs(wave.limitHigh), Math.abs(wave.limitLow)) * (wave.isRaw ? 32768 : 1);
    for (const [i, sample] of read.entries()) {
        const rounded = floatImage(roundedSample(wave, sample), 4);
        if (hex(rounded) !== hex(floatImage(samples[i], 4) ?? []))
            yield `value.samples[${i}] is ${readFloat(rounded)}, but ${samples[i]} in the JSON`;
        if (!(Math.abs(sample.value - readFloat(rounded)) <= range * 2 ** -22))
            yield `value.samples[${i}].value is ${sample.value}, too far from ${readFloat(rounded)}`;
    }
    yield* remainderDifferences(wave.block.ignored, behind);
}

// --- Frames ---------------------------------------------------------------------------------------------------------

// Returns the form of a payload, by its command and the transport, the direction and the form in the JSON.
function payloadForm(command, { direction, transport, form }) {
    if (command === 255 && direction === "reply")
        return "error";
    if (command === 5 && direction === "request")
        return transport === "udp" ? "ints" : "intPair";
    return [1, 2, 3, 5, 6].includes(command) ? "int" : form;
}

// For each form: its member in the payload, and its content in the JSON.
const payloadMembers = {
    int: { name: "integer", content: (read) => read.value },
    error: { name: "error", content: (read) => read.code },
    intPair: { name: "integerPair", content: (read) => [read.first, read.second] },
    ints: { name: "integers", content: (read) => read.items },
    bytes: { name: "bytes", content: (read) => hex(read.items) },
    strings: { name: "strings", content: (read) => completeItems(read)?.map((entry) => entry.utf8) },
};

// Returns the items before one that overruns the payload, or undefined if the count was refused.
function completeItems({ items, _debug }) {
    return items?.filter((_, i) => _debug.items.arr[i].end !== undefined);
}

function readPayload(payload, form) {
    if (form === undefined)
        return {};
    const { name, content } = payloadMembers[form];
    try {
        const rest = payload._io.size - (payload[name], payload._debug[`_m_${name}`].end);
        return { form, content: content(payload[name]), ...(rest > 0 && { rest }) };
    } catch (error) {
        if (!isRefusal(error))
            throw error;
        const read = form === "strings" ? content(payload[`_m_${name}`]) : undefined;
        return { form, ...(read && { content: read }), fault: "form" };
    }
}

function isRefusal(error) {
    const { EOFError, ValidationExprError, ValidationGreaterThanError } = KaitaiStream;
    return [EOFError, ValidationExprError, ValidationGreaterThanError].some((kind) => error instanceof kind);
}

// Returns the fault for which the reader refused a frame.
function frameFault({ _debug: { length, endByte } }, error) {
    if (error instanceof KaitaiStream.EOFError)
        return "cut";
    if (error === length.validationError)
        return "length";
    if (error === endByte?.validationError)
        return "end";
    throw error;
}

// Returns a part of the JSON for a frame. `fault` is the reason why the reader stopped, if it did.
function describeFrame(frame, fault, io, described) {
    const { _debug: places, length, sequence, arg2, arg1, command } = frame;
    const offset = places.startByte.start;
    if (fault === "length")
        return { offset, length, fault };
    if (fault === "cut" && places.command?.end === undefined)
        return { offset, header: hex(imageAt(io, { start: offset, end: io.size })), fault };
    const cutAt = (start, size) => hex(imageAt(io, { start, end: Math.min(io.size, start + size) }));
    const payload = cutAt(places.payload.start, length);
    const check = cutAt(places.payload.start + payload.length / 2, 2);
    return {
        offset, length, sequence, arg2, arg1, command, payload,
        ...(check && { check: frame.checksum ? hex(frame.checksum) : check }),
        ...(frame.endByte && { end: hex(frame.endByte) }),
        ...(fault ? { fault } : readPayload(frame.payload, payloadForm(command, described))),
    };
}

function readFrames(io, described) {
    const parts = [];
    while (!io.isEof()) {
        const part = new GqFrame.Part(io);
        let fault;
        try {
            part._read();
        } catch (error) {
            fault = frameFault(part.frame, error);
        }
        if (part.garbage.length > 0)
            parts.push({ offset: part._debug.garbage.start, garbage: hex(part.garbage) });
        if (part.frame !== undefined)
            parts.push(describeFrame(part.frame, fault, io, described));
        if (fault === "length")
            io.seek(part._debug.frame.start + 1); // a false start byte: the next one may follow immediately
        else if (fault === "cut")
            io.seek(io.size);
    }
    return parts;
}

function* framesDifferences(io, described) {
    const wanted = described.value;
    const parts = readFrames(io, described);
    for (let i = 0; i < Math.max(parts.length, wanted.length); ++i) {
        const [read, part] = [parts[i] ?? {}, wanted[i] ?? {}];
        for (const name of new Set([...Object.keys(read), ...Object.keys(part)])) {
            const [value, described] = [read, part].map((members) => JSON.stringify(members[name]));
            if (value !== described)
                yield `value[${i}].${name} is ${value}, but ${described} in the JSON`;
        }
    }
    if (wanted.some((part) => part.fault && part.fault !== "form"))
        return;
    io.seek(0);
    const all = new GqFrame.Frames(io);
    all._read();
    const count = all.parts.filter((part) => part.frame !== undefined).length;
    if (count !== wanted.filter((part) => part.garbage === undefined).length)
        yield `the type frames finds ${count} frames`;
}

// --- Refusals -------------------------------------------------------------------------------------------------------

function isRefused(Reader, bytes) {
    try {
        new Reader(new KaitaiStream(Buffer.from(bytes)))._read();
        return false;
    } catch (error) {
        if (!isRefusal(error))
            throw error;
        return true;
    }
}

function* refusalFaults() {
    const slot = (length) => [length & 255, length >> 8, ...Array(256).fill(0)];
    const wave = (flags, blockSize) => {
        const head = [0, flags, ...Array(50).fill(0), 1, 0, 0, 0, ...Array(40).fill(0)]; // one mark
        return [...head, ...Array(4 + blockSize).fill(0)];
    };
    const cases = [
        ["a slot with a text of 257 bytes", true, types.slot.Reader, slot(257)],
        ["a slot with a text of 256 bytes", false, types.slot.Reader, slot(256)],
        ["a wave with a mark and 95 bytes after it", true, GqWave, wave(0, 95)],
        ["a wave with a mark and 96 bytes after it", false, GqWave, wave(0, 96)],
    ];
    for (const [what, refused, Reader, bytes] of cases)
        if (isRefused(Reader, bytes) !== refused)
            yield `${what} must be ${refused ? "refused" : "read"}`;
}

// --- Files ----------------------------------------------------------------------------------------------------------

function* fileDifferences(stem) {
    const digits = fs.readFileSync(`${stem}.hex`, "utf8").replace(/#.*/g, "").replace(/\s/g, "");
    const described = JSON.parse(fs.readFileSync(`${stem}.json`, "utf8"));
    const io = new KaitaiStream(Buffer.from(digits, "hex"));
    const compare = { wave: waveDifferences, frames: framesDifferences }[described.as] ?? recordFileDifferences;
    try {
        yield* compare(io, described);
    } catch (error) {
        yield String(error.stack);
    }
}

const files = ["records", "waves", "frames"].flatMap((folder) =>
    fs.readdirSync(path.join(golden, folder))
        .filter((name) => name.endsWith(".json"))
        .map((name) => path.join(folder, path.parse(name).name)));
const unexpected = [...refusalFaults()];
for (const line of unexpected)
    console.log(line);
let bad = 0;
for (const file of files) {
    const wrong = [...fileDifferences(path.join(golden, file))];
    bad += wrong.length > 0;
    for (const line of wrong)
        console.log(`${file}.hex: ${line}`);
}
console.log(`${files.length} files, ${bad === 0 ? "no difference" : `${bad} differ`}`);
process.exit(bad > 0 || unexpected.length > 0 || files.length === 0 ? 1 : 0);
