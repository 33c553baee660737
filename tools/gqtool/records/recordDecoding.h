#pragma once

#include "decodeListener.h"
#include "decoding.h"
#include "recordFields.h"

// Decodes bytes field by field, independently of the library's reader. Lists are read item by item. Stops at the first
// field that is incomplete; after more than `mostFaults` other faults, only counts them. Leaves `bytes` after the record
// or list, or where it stopped.
Decoding decode(const Form& form, ByteWindow& bytes, DecodeListener& listener, size_t mostFaults);

// Names of the fields of an item of a list. No list has items with a varying number of fields.
std::vector<std::string> fieldNames(const Form& list);

// Calls the library's reader, if `bytes` has kept all of the input, which must have ended. Adds its result.
void callReader(const Form& form, const ByteWindow& bytes, Decoding& decoding);
