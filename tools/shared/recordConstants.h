#pragma once

// Numbers in records that have a meaning on the wire. docs/formats/wave.md and docs/formats/records.md describe them.

// In waveFlags of a BlobWaveHead. Raw samples are never quantised, whatever their second flag says.
enum WaveFlag : unsigned char {
    rawSamples = 1,
    quantisedSamples = 2,
    compressedSamples = 4,
};

// In kind of a Variant.
enum VariantKind : unsigned char {
    kindInt = 0,
    kindFloat = 5,
    kindDouble = 6,
    kindText = 10,
    kindTime = 11,
};
