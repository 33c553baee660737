#pragma once

#include <vector>

// The fields of a record in wire order, each a number of bytes or one of these.
const int textField = -1; // length (2 bytes), and so many bytes
const int blobField = -2; // length (4 bytes), and so many bytes

struct Layout {
    std::vector<int> fields;
    int least = 0; // bytes that the reader needs, if more than the shortest record has
};

// Bytes of the record at `buf`; 0 if `size` bytes do not hold it.
int recordSize(const Layout& layout, const char* buf, int size);

// Bytes of a count (4 bytes) and so many records; 0 if `size` bytes do not hold them.
int listSize(const Layout& layout, const char* buf, int size);

// Return true if the record's texts are ASCII without a zero byte, which survive the conversion to QString and back.
bool hasPlainTexts(const Layout& layout, const char* buf);
bool hasPlainTextsInList(const Layout& layout, const char* buf, int size);

// Bytes of the shortest record.
int shortestSize(const Layout& layout);

// Little-endian numbers.
unsigned int numberOf2(const char* buf);
unsigned int numberOf4(const char* buf);
