#pragma once

// What the simulated station understands besides the ready-made commands 1, 2, 3, 5 and 6. The numbers are its own:
// the library names no commands for lists. Each request carries one integer.
enum StationCommand : unsigned char {
    commandInts = 0x20,    // payload: how many; reply: integer lists, in frames of up to intsPerFrame
    commandBytes = 0x21,   // payload: how many; reply: byte lists, in frames of up to bytesPerFrame
    commandStrings = 0x22, // payload: how many; reply: string lists, in frames of up to stringsPerFrame
    commandError = 0x23,   // payload: a code; reply: an error frame that holds it
};

enum StationError {
    errorUnknownCommand = -10,
    errorBadPayload = -11, // too short, or a count outside of 1 to what the station has
};

enum StationData {
    intCount = 1000,
    byteCount = 100000,
    stringCount = 48,
    intsPerFrame = 100,
    bytesPerFrame = 4096,
    stringsPerFrame = 10,
};
