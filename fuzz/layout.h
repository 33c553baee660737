#pragma once

#include <vector>

// The fields of a record as they follow each other on the wire: a number of bytes, or one of these.
const int textField = -1; // length (2 bytes), and so many bytes
const int blobField = -2; // length (4 bytes), and so many bytes

struct Layout {
    std::vector<int> fields;
    int least = 0; // a reader that wants more than the shortest record has: bytes
};

// Bytes of the record at `buf`; 0 if `size` bytes do not hold it.
int recordSize(const Layout& layout, const char* buf, int size);

// Bytes of a count (4 bytes) and so many records; 0 if `size` bytes do not hold them.
int listSize(const Layout& layout, const char* buf, int size);

// Whether the texts of a record that is held are ASCII without a zero byte: a QString gives these back as they are.
bool hasPlainTexts(const Layout& layout, const char* buf);
bool hasPlainTextsInList(const Layout& layout, const char* buf, int size);

// Bytes of the shortest record.
int shortestSize(const Layout& layout);

// Little-endian numbers.
unsigned int numberOf2(const char* buf);
unsigned int numberOf4(const char* buf);
