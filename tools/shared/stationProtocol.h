#pragma once

// What the simulated station understands besides the ready-made commands 1, 2, 3, 5 and 6. The numbers and all meaning
// are its own: the library names no commands for lists or records. Each request carries one integer.
enum StationCommand : unsigned char {
    commandInts = 0x20,    // payload: how many; reply: integer lists, in frames of up to intsPerFrame
    commandBytes = 0x21,   // payload: how many; reply: byte lists, in frames of up to bytesPerFrame
    commandStrings = 0x22, // payload: how many; reply: string lists, in frames of up to stringsPerFrame
    commandError = 0x23,   // payload: a code; reply: an error frame that holds it

    // The point database. Payload: any integer; reply: one byte list frame, its bytes are
    commandPointInfos = 0x30,  // a list of PointInfo, all points in their short form
    commandFloatPoints = 0x31, // a list of FloatPoint
    commandIntPoints = 0x32,   // a list of IntPoint, in the form that byte2IntPoints reads
    commandBoolPoints = 0x33,  // a list of BoolPoint
    commandBlobPoints = 0x34,  // a list of BlobPoint
    commandValues = 0x35,      // a list of PointRealData, the current value of each numeric point
    commandWave = 0x36,        // the stored wave of the blob point
    commandEvents = 0x37,      // a list of EventInfo
    commandObject = 0x38,      // an ObjectData in the blob form

    // The front-end processor, in the same way
    commandNodeHeads = 0x40, // a list of NodeHead
    commandCommItems = 0x41, // a list of CommItem, in the form that byte2CommItems reads
    commandYcItems = 0x42,   // a list of YcItem
    commandYxItems = 0x43,   // a list of YxItem
    commandYdItems = 0x44,   // a list of YdItem
    commandYbItems = 0x45,   // a list of YbItem, in the form that byte2YbItems reads
};

enum StationError {
    errorUnknownCommand = -10,
    errorBadPayload = -11, // too short, or a count outside of 1 to what the station has
};

enum StationStock {
    intCount = 1000,
    byteCount = 100000,
    stringCount = 48,
    waveSamples = 2000,
};

// How the station cuts its long lists.
enum FrameLimit {
    intsPerFrame = 100,
    bytesPerFrame = 4096,
    stringsPerFrame = 10,
};

// In code1 of a PointInfo and in pointKind of a PointRealData.
enum PointKind : char {
    kindFloatPoint = 1,
    kindIntPoint = 2,
    kindBoolPoint = 3,
    kindBlobPoint = 4,
};

// Three points with floating-point values, one of each other kind.
enum PointNumber : unsigned int {
    firstFloatPoint = 1000,
    firstIntPoint = 2000,
    firstBoolPoint = 3000,
    firstBlobPoint = 4000,
};
