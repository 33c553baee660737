#pragma once

#include <vector>

// The fields of a record in wire order, each a number of bytes or one of these.
const int textField = -1; // length (2 bytes), and as many bytes
const int blobField = -2; // length (4 bytes), and as many bytes

struct Layout {
    std::vector<int> fields;
    int least = 0; // bytes that the reader needs, if more than the shortest record has
};

// Returns the size of the record at `buf`, or 0 if it does not fit into `size` bytes.
int recordSize(const Layout& layout, const char* buf, int size);

// Returns the size of a count (4 bytes) and as many records, or 0 if they do not fit into `size` bytes.
int listSize(const Layout& layout, const char* buf, int size);

// Return true if the record's texts are ASCII without a zero byte, which survive the conversion to QString and back.
bool hasPlainTexts(const Layout& layout, const char* buf);
bool hasPlainTextsInList(const Layout& layout, const char* buf, int size);

// Returns the size of the shortest record.
int shortestSize(const Layout& layout);

// Little-endian numbers.
unsigned int numberOf2(const char* buf);
unsigned int numberOf4(const char* buf);
