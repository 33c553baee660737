// Compares the offset tables of docs/formats/*.md with the descriptions beside them: the fields of each record, their
// offsets, sizes and kinds, and the sizes of the records.
//   node tablesTest.js
//
// Sizes that vary have one value here, such as 11 bytes for S1, so that the expressions in the tables are numbers.
"use strict";

const fs = require("fs");
const path = require("path");
const { load } = require("../../examples/makeReaders.js");

const folder = path.join(__dirname, "../../docs/formats");
const snake = (name) => name.replace(/[A-Z]/g, (letter) => `_${letter.toLowerCase()}`);

const texts = { S1: 11, S2: 23, S3: 47, S4: 101, S5: 211, S6: 401 };
const emptyTexts = Object.fromEntries(Object.keys(texts).map((name) => [name, 2]));
const others = { K: 17, L: 1009, M: 53, V: 31, n: 7 };

// --- What is compared -----------------------------------------------------------------------------------------------

// For each table, by page, heading and number under that heading: the columns of offsets, the type that each describes,
// and what the size fields of the type contain. Columns of field and size are found by their titles.
const tables = [
    { at: "frame.md Layout 1", types: { offset: "gq_frame" }, sizes: { length: "L" } },
    { at: "frame.md One integer 1", types: { offset: "one_integer" } },
    { at: "frame.md Integer list 1", types: { offset: "integer_list" }, sizes: { count: "n" } },
    { at: "frame.md Byte list 1", types: { offset: "byte_list" }, sizes: { count: "n" } },
    { at: "frame.md String list 1", types: { offset: "string_list" }, sizes: { count: "n" } },
    {
        at: "frame.md String list 2",
        types: { "offset in the item": "string_item" },
        sizes: { len_item: "M", len_bytes: "K" },
    },
    { at: "frame.md Error frame 1", types: { offset: "error_code" } },

    { at: "records.md PointInfo 1", types: { offset: "point_info" } },
    {
        at: "records.md The full definitions 1",
        types: {
            FloatPoint: "float_point",
            "IntPoint, written": "int_point_written",
            "IntPoint, read": "int_point",
            BoolPoint: "bool_point",
            BlobPoint: "blob_point",
        },
    },
    {
        at: "records.md Of one kind of point 1",
        types: {
            FloatRealData: "float_real_data",
            FloatData: "float_data",
            IntRealData: "int_real_data",
            IntData: "int_data",
            BoolRealData: "bool_real_data",
            BoolData: "bool_data",
        },
    },
    { at: "records.md PointRealData 1", types: { offset: "point_real_data" } },
    {
        at: "records.md Blobs 1",
        types: { BlobDataInfo: "blob_data_info", BlobRealData: "blob_real_data", BlobData: "blob_data" },
        sizes: { len_bytes: "L" },
    },
    { at: "records.md Queries 1", types: { HisQuery: "his_query", OneSecQuery: "one_sec_query" } },
    { at: "records.md Events 1", types: { offset: "event_info" } },
    { at: "records.md Events 2", types: { offset: "event_state" } },
    { at: "records.md Variant 1", types: { offset: "variant" } },
    {
        at: "records.md PropertyData 1",
        types: { "byte form: offset": "property_data", "blob form: offset": "property_data_blob" },
    },
    {
        at: "records.md ObjectData 1",
        types: { "byte form: offset": "object_data", "blob form: offset": "object_data_blob" },
    },

    { at: "frontEndRecords.md NodeHead 1", types: { offset: "node_head" } },
    { at: "frontEndRecords.md CommItem 1", types: { offset: "comm_item" } },
    { at: "frontEndRecords.md YcItem 1", types: { offset: "yc_item" } },
    { at: "frontEndRecords.md YxItem 1", types: { offset: "yx_item" } },
    { at: "frontEndRecords.md YdItem 1", types: { offset: "yd_item" } },
    { at: "frontEndRecords.md YbItem 1", types: { "offset, written": "yb_item_written", "offset, read": "yb_item" } },

    { at: "wave.md The stored wave 1", types: { offset: "gq_wave" }, sizes: { mark_count: "M" } },
    { at: "wave.md Head 1", types: { offset: "gq_wave" }, sizes: { mark_count: "M" }, until: "marks" },
];

// The kinds of a variant: the columns of sizes, and the type that each describes.
const kinds = { at: "records.md Variant 2", types: { "V, byte form": "variant", "V, blob form": "variant_blob" } };

// Rows that do not name their field as the description does.
const names = {
    start: "start_byte",
    end: "end_byte",
    "value, signed": "value",
    "code, signed": "code",
    "count n": "count",
    "the n integers, signed": "items",
    "the n bytes": "items",
    "the n items, back to back": "items",
    "M, the number of bytes of the item after this field, unsigned": "len_item",
    "K, the number of bytes of the text, unsigned; K + 2 must not exceed M": "len_bytes",
    "the text in UTF-8, with no terminator": "bytes",
    "ignored; usually nothing": "ignored",
    "L, the number of bytes": "len_bytes",
    "the value": "int_value",
    "a zero byte, ignored": "ignored",
    "number of properties, unsigned": "property_count",
    "the properties, in the same form": "properties",
    "[head](#head)": "head_byte to head_fill2",
    "[marks](#marks), M of them": "marks",
    "[sample block](#sample-block)": "plain_block",
};

// Types that the pages describe in words, or as a part of another type.
const withoutTable = [
    ...["gq_text", "slot", "variant_blob", "two_integers", "item_text"],
    ...["frames", "part", "payload_forms", "sample_block", "sample"],
];

// --- Expressions ----------------------------------------------------------------------------------------------------

// Returns the value of a sum of numbers, names and products such as `4 n`. `S1 + ... + S3` is S1 + S2 + S3.
function evaluate(expression, values) {
    const written = String(expression).replace(/S1 \+ \.\.\. \+ S(\d)/, (_, last) =>
        Array.from({ length: Number(last) }, (_, i) => `S${i + 1}`).join("+"));
    let sum = 0;
    for (const [, sign, product] of written.matchAll(/([+-]?)\s*(\w+(?: \w+)*)/g)) {
        const factors = product.split(" ").map((factor) => (/^\d+$/.test(factor) ? Number(factor) : values[factor]));
        if (factors.includes(undefined))
            throw new Error(`unknown name in '${expression}'`);
        sum += (sign === "-" ? -1 : 1) * factors.reduce((a, b) => a * b);
    }
    return sum;
}

// --- Layouts of the descriptions ------------------------------------------------------------------------------------

const types = {};
for (const file of fs.readdirSync(folder).filter((name) => name.endsWith(".ksy"))) {
    const { meta, seq, types: nested } = load(folder, path.parse(file).name);
    for (const [name, type] of Object.entries({ ...(seq && { [meta.id]: { seq } }), ...nested }))
        types[name] = type.seq ?? [];
}

// Returns the size of a text: S4 for text4.
function textSize({ id }, values) {
    const number = { format_text: 1, value_text: 2 }[id] ?? /\d$/.exec(id);
    return number === null ? 2 + values.K : values[`S${number}`];
}

// Returns the size of an attribute; NaN if the descriptions alone do not define it.
//   left   the number of bytes from its offset to the end, or NaN
function sizeOf(attribute, values, left) {
    const { type, contents, size, repeat } = attribute;
    if (contents !== undefined)
        return contents.length;
    if (size !== undefined)
        return evaluate(String(size).replace(/.*\? (.*) :.*/, "$1"), values); // the usual case comes first
    if (attribute["size-eos"])
        return left;
    if (/^[usf]\d$/.test(type))
        return Number(type[1]) * (repeat === undefined ? 1 : evaluate(attribute["repeat-expr"], values));
    if (repeat !== undefined)
        return NaN;
    return type === "gq_text" ? textSize(attribute, values) : layout(type, values).size;
}

// Members of which a record has one, depending on its kind, flags or size. They have the same offset.
function isAlternative(attribute) {
    return /\bkind ==|\bis_compressed\b|\blen_item\b/.test(attribute?.if ?? "");
}

// Returns the fields of a type, with those of parts of a fixed size, and its size.
function layout(type, values, start = 0, end = NaN) {
    const fields = {};
    let at = start;
    for (const [i, attribute] of types[type].entries()) {
        if (isAlternative(attribute) && isAlternative(types[type][i - 1]))
            continue; // the table has one row for all
        const isVariant = isAlternative(attribute) && attribute.if.includes("kind");
        const size = isVariant ? values.V : sizeOf(attribute, values, end - at);
        const parts = attribute.size === undefined ? undefined : types[attribute.type];
        if (parts?.length > 0)
            Object.assign(fields, layout(attribute.type, values, at, at + size).fields);
        else
            fields[attribute.id] = { offset: at, size, type: attribute.type };
        at += size;
    }
    return { fields, size: at - start };
}

// --- Tables of the pages --------------------------------------------------------------------------------------------

// Returns the tables of a page by page, heading and number under that heading.
function readTables(page) {
    const found = {};
    let heading = "";
    let number = 0;
    let isExample = false;
    let rows;
    for (const line of fs.readFileSync(path.join(folder, page), "utf8").split("\n")) {
        if (line.startsWith("```"))
            isExample = !isExample;
        if (line.startsWith("#"))
            [heading, number] = [line.replace(/^#+ /, ""), 0];
        if (isExample || !line.startsWith("|"))
            rows = undefined;
        else if (rows !== undefined)
            rows.push(line);
        else
            found[`${page} ${heading} ${++number}`] = rows = [line];
    }
    const cells = (line) => line.slice(1, -1).split("|").map((cell) => cell.replace(/\*\*/g, "").trim());
    return Object.fromEntries(Object.entries(found).map(([at, [title, , ...lines]]) =>
        [at, { titles: cells(title), rows: lines.map(cells) }]));
}

// Returns the fields that a row names: `word1` to `word4`, or one or several.
function fieldNames(cell) {
    if (cell in names)
        return [names[cell]];
    const quoted = [...cell.matchAll(/`(\w+)`/g)].map((found) => snake(found[1]));
    if (!cell.includes("` to `"))
        return quoted.length > 0 ? quoted : [cell];
    const [first, last] = quoted.map((name) => Number(/\d+$/.exec(name)));
    return Array.from({ length: last - first + 1 }, (_, i) => quoted[0].replace(/\d+$/, first + i));
}

// Returns what a column contains: name, offset, size and kind of each field, and the sizes of the record.
function readColumn({ titles, rows }, title) {
    const offset = titles.indexOf(title);
    const bytes = titles[offset + 1] === "bytes" ? offset + 1 : titles.indexOf("bytes");
    const field = Math.max(titles.indexOf("field"), titles.indexOf("part"));
    const column = { rows: [] };
    for (const row of rows.filter((cells) => cells[offset] !== "-")) {
        const label = field < 0 ? row[offset + 2] : row[field]; // a column without a title
        if (["size", "with empty texts", "least size of a list"].includes(label)) {
            column[label] = row[offset];
            continue;
        }
        const found = fieldNames(label);
        const [place, ...kind] = row[offset].split(", ");
        for (const [i, name] of found.entries()) {
            column.rows.push({
                name,
                offset: i === 0 ? place : kind[i - 1],
                size: row[bytes].replace(" each", ""),
                words: found.length === 1 ? [label, row[titles.indexOf("content")], ...kind].join(", ") : "",
            });
        }
    }
    return column;
}

// --- Comparison -----------------------------------------------------------------------------------------------------

const kindWords = { unsigned: "u", signed: "s", double: "f8", "floats?": "f4", "integers?": "s" };

// Returns a word that contradicts the type of a number.
function wrongWord(words, type) {
    const isNumber = /^[usf]\d$/.test(type ?? "");
    return Object.keys(kindWords).find((word) =>
        isNumber && new RegExp(`\\b${word}\\b`).test(words) && !type.startsWith(kindWords[word]));
}

// Returns a field, or all of a range `first to last`.
function findField(fields, name) {
    const [first, last] = name.split(" to ").map((id) => fields[id]);
    return last === undefined ? first : { offset: first.offset, size: last.offset + last.size - first.offset };
}

function isWithin(inner, outer) {
    return inner.offset >= outer.offset && inner.offset + inner.size <= outer.offset + outer.size;
}

function* columnFaults(table, title, type, { sizes = {}, until }) {
    const values = { ...others, ...texts, len_bytes: others.K };
    for (const [field, symbol] of Object.entries(sizes))
        values[field] = others[symbol];
    const { fields, size } = layout(type, values);
    const column = readColumn(table, title);
    const ids = Object.keys(fields);
    const left = new Set(until === undefined ? ids : ids.slice(0, ids.indexOf(until)));

    let before; // the field in the row above
    for (const row of column.rows) {
        const field = findField(fields, row.name);
        if (field === undefined) {
            yield `${row.name} is not in the description`;
            continue;
        }
        for (const id of [...left].filter((name) => name === row.name || isWithin(fields[name], field)))
            left.delete(id);
        if (/^[AB]$/.test(row.offset) && values[row.offset] === undefined)
            values[row.offset] = before.type === "gq_text" ? before.offset + before.size : NaN;
        if (evaluate(row.offset, values) !== field.offset)
            yield `${row.name} is at ${row.offset} in the page, but at ${field.offset} in the description`;
        const bytes = row.size === "4, bool 1" ? (type.startsWith("bool_") ? 1 : 4) : row.size;
        const isOpen = bytes === "" || bytes === "the rest";
        if (isOpen ? !Number.isNaN(field.size) : evaluate(bytes, values) !== field.size)
            yield `${row.name} has ${bytes} bytes in the page, but ${field.size} in the description`;
        const word = wrongWord(row.words, field.type);
        if (word !== undefined)
            yield `${row.name} is ${word} in the page, but ${field.type} in the description`;
        before = field;
    }
    for (const name of left)
        yield `${name} is not in the page`;
    if (column.size !== undefined && evaluate(column.size, values) !== size)
        yield `has ${column.size} bytes in the page, but ${size} in the description`;
    const empty = layout(type, { ...values, ...emptyTexts }).size;
    if (column["with empty texts"] !== undefined && Number(column["with empty texts"]) !== empty)
        yield `has ${column["with empty texts"]} bytes with empty texts in the page, but ${empty} in the description`;
}

// The values of a variant: a row for each kind.
function* kindFaults({ titles, rows }, title, type) {
    const values = { ...others, len_bytes: others.K };
    const members = new Map(types[type].map((member) => [member.if?.replace("kind == ", ""), member]));
    members.delete(undefined); // the kind itself
    for (const row of rows) {
        const [kind, words] = row;
        const member = members.get(kind);
        const size = row[titles.indexOf(title)].replace(/,.*/, "");
        if (evaluate(size, values) !== (member === undefined ? 0 : sizeOf(member, values, NaN)))
            yield `kind ${kind} has ${size} bytes in the page, but not in the description`;
        if (wrongWord(words, member?.type) !== undefined)
            yield `kind ${kind} is ${words} in the page, but ${member.type} in the description`;
        members.delete(kind);
    }
    for (const kind of members.keys())
        yield `kind ${kind} is not in the page`;
}

function isOfOffsets(title) {
    return title === "field" || title.includes("offset");
}

function* allFaults() {
    const pages = fs.readdirSync(folder).filter((name) => name.endsWith(".md"));
    const found = Object.assign({}, ...pages.map(readTables));
    const missing = new Set(Object.keys(types).filter((type) => !types[type].some(({ id }) => id === "items")));
    for (const name of withoutTable)
        missing.delete(name);
    const compared = [...tables.map((entry) => [entry, columnFaults]), [kinds, kindFaults]];
    for (const [entry, compare] of compared)
        for (const [title, type] of Object.entries(entry.types)) {
            missing.delete(type);
            if (!found[entry.at]?.titles.includes(title))
                yield `${entry.at}: no table with a column '${title}'`;
            else
                for (const fault of compare(found[entry.at], title, type, entry))
                    yield `${entry.at}: ${type}: ${fault}`;
        }
    for (const type of missing)
        yield `${type}: no table in the pages`;
    for (const [at, { titles }] of Object.entries(found))
        if (titles.some(isOfOffsets) && !compared.some(([entry]) => entry.at === at))
            yield `${at}: a table of offsets that is compared with no description`;
}

const faults = [...allFaults()];
for (const fault of faults)
    console.log(fault);
const columns = tables.reduce((sum, { types: compared }) => sum + Object.keys(compared).length, 0);
const result = faults.length === 0 ? "no difference" : `${faults.length} differences`;
console.log(`${tables.length} tables with ${columns} layouts, ${result}`);
process.exit(faults.length === 0 ? 0 : 1);
