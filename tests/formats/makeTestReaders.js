// Makes the readers that the tests use from docs/formats: in JavaScript, with the offsets of fields, and in Python by
// the version of the compiler that fits Debian 12's runtime library.
//   node makeTestReaders.js OUTPUT
"use strict";

const path = require("path");
const { makeReaders } = require("../../examples/makeReaders.js");

const formats = path.join(__dirname, "../../docs/formats");
async function main(output) {
    await makeReaders(require("kaitai-struct-compiler"), "javascript", formats, `${output}/javascript`, true);
    await makeReaders(require("kaitai-struct-compiler-0.10"), "python", formats, `${output}/python`);
}

main(process.argv[2]).catch((error) => {
    console.error(`makeTestReaders: ${error.message ?? error}`);
    process.exit(1);
});
