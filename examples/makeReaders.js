// Makes readers of the formats in a language that Kaitai Struct knows, such as python, csharp, java or javascript.
//   node makeReaders.js LANGUAGE FORMATS OUTPUT
// FORMATS is the folder of the .ksy files. The npm packages kaitai-struct-compiler and yaml must be installed.
"use strict";

const fs = require("fs");
const path = require("path");
const YAML = require("yaml");

// Returns the description in FOLDER/NAME.ksy.
function load(folder, name) {
    return YAML.parse(fs.readFileSync(path.join(folder, `${name}.ksy`), "utf8"));
}

async function makeReaders(compiler, language, formats, output, withOffsets = false) {
    const api = typeof compiler === "function" ? new compiler() : compiler; // before 0.11 it is a class
    if (!api.languages.includes(language))
        throw new Error(`unknown language '${language}', must be one of ${api.languages.join(" ")}`);
    const importer = { importYaml: async (name) => load(formats, name) };
    for (const file of fs.readdirSync(formats).filter((name) => name.endsWith(".ksy"))) {
        const sources = await api.compile(language, load(formats, path.parse(file).name), importer, withOffsets);
        for (const [name, text] of Object.entries(sources)) {
            const target = path.join(output, name);
            fs.mkdirSync(path.dirname(target), { recursive: true });
            fs.writeFileSync(target, text);
        }
    }
}

if (require.main === module) {
    if (process.argv.length !== 5) {
        console.error("makeReaders: expected LANGUAGE FORMATS OUTPUT");
        process.exit(2);
    }
    makeReaders(require("kaitai-struct-compiler"), ...process.argv.slice(2)).catch((error) => {
        console.error(`makeReaders: ${error.message ?? error}`);
        process.exit(1);
    });
}

module.exports = { load, makeReaders };
