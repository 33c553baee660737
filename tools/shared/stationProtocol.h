#pragma once

// The commands of the simulated station besides the ready-made ones. The station defines their numbers and meanings: the
// library has no commands for lists or records. Each request carries one integer.
enum StationCommand : unsigned char {
    commandInts = 0x20,    // payload: a count; reply: integer lists, in frames of up to intsPerFrame
    commandBytes = 0x21,   // payload: a count; reply: byte lists, in frames of up to bytesPerFrame
    commandStrings = 0x22, // payload: a count; reply: string lists, in frames of up to stringsPerFrame
    commandError = 0x23,   // payload: a code; reply: an error frame with it

    // The point database. Payload: any integer; reply: one byte list frame, which contains
    commandPointInfos = 0x30,  // a list of PointInfo, all points in their short form
    commandFloatPoints = 0x31, // a list of FloatPoint
    commandIntPoints = 0x32,   // a list of IntPoint, in the form for byte2IntPoints
    commandBoolPoints = 0x33,  // a list of BoolPoint
    commandBlobPoints = 0x34,  // a list of BlobPoint
    commandValues = 0x35,      // a list of PointRealData, the current value of each numeric point
    commandWave = 0x36,        // the stored wave of the blob point
    commandEvents = 0x37,      // a list of EventInfo
    commandObject = 0x38,      // an ObjectData in the blob form

    // The front-end processor, in the same form
    commandNodeHeads = 0x40, // a list of NodeHead
    commandCommItems = 0x41, // a list of CommItem, in the form for byte2CommItems
    commandYcItems = 0x42,   // a list of YcItem
    commandYxItems = 0x43,   // a list of YxItem
    commandYdItems = 0x44,   // a list of YdItem
    commandYbItems = 0x45,   // a list of YbItem, in the form for byte2YbItems
};

enum StationError {
    errorUnknownCommand = -10,
    errorBadPayload = -11, // too short, or a count below 1 or above what the station has
};

enum StationStock {
    intCount = 1000,
    byteCount = 100000,
    stringCount = 48,
    waveSamples = 2000,
};

// How the station splits long lists.
enum FrameLimit {
    intsPerFrame = 100,
    bytesPerFrame = 4096,
    stringsPerFrame = 10,
};

// Values of code1 of a PointInfo and of pointKind of a PointRealData.
enum PointKind : char {
    kindFloatPoint = 1,
    kindIntPoint = 2,
    kindBoolPoint = 3,
    kindBlobPoint = 4,
};

// Numbers of the three float points and of one point of each other kind.
enum PointNumber : unsigned int {
    firstFloatPoint = 1000,
    firstIntPoint = 2000,
    firstBoolPoint = 3000,
    firstBlobPoint = 4000,
};
