#pragma once

#include "support/hex.h"

#include <QByteArray>

#include <cstring>
#include <initializer_list>
#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

// --- Layout of a record ---------------------------------------------------------

// Whether offsets, given in the order of the declaration, rise.
constexpr bool rising(std::initializer_list<size_t> offsets)
{
    size_t next = 0;
    for (size_t offset : offsets) {
        if (offset < next)
            return false;
        next = offset + 1;
    }
    return true;
}

// Whether all these fields, given as &Record::field, are of one type: allAre<char Record::*>(...).
template <typename Field, typename... Fields>
constexpr bool allAre(Fields...)
{
    return (std::is_same_v<Field, Fields> && ...);
}

// --- Floating-point numbers by their image --------------------------------------

inline float floatOf(unsigned int image)
{
    float value;
    std::memcpy(&value, &image, sizeof value);
    return value;
}

inline double doubleOf(unsigned long long image)
{
    double value;
    std::memcpy(&value, &image, sizeof value);
    return value;
}

// --- A record as text -----------------------------------------------------------

// A field a line, as the bytes that it has in memory, so that a failed comparison names the field. A NaN is equal to
// itself here.
class FieldText {
public:
    template <typename Field>
    FieldText& add(const char* name, const Field& field)
    {
        static_assert(std::is_arithmetic_v<Field> || std::is_array_v<Field>);
        return line(name, &field, sizeof field);
    }
    FieldText& add(const char* name, const std::string& field) { return line(name, field.data(), field.size()); }
    FieldText& add(const char* name, const std::vector<unsigned char>& field)
    {
        return line(name, field.data(), field.size());
    }

    std::string text() const { return lines; }

private:
    FieldText& line(const char* name, const void* bytes, size_t size)
    {
        lines += name;
        lines += ": " + hex(QByteArray(static_cast<const char*>(bytes), int(size))) + "\n";
        return *this;
    }

    std::string lines;
};

// A list by its items. The test has a show() of one record, in the namespace of the record, where it is found from
// here.
template <typename Record>
std::string showAll(const std::vector<Record>& list)
{
    std::string text;
    for (const Record& record : list)
        text += show(record) + "--\n";
    return text;
}

// --- What a constructor leaves alone --------------------------------------------

// Memory full of 0xee for one record. Volatile, so that the compiler neither drops the pattern ahead of a constructor
// nor presumes what a field left alone holds.
template <typename Record>
class PatternedMemory {
public:
    PatternedMemory()
    {
        for (volatile unsigned char& byte : memory)
            byte = 0xee;
    }

    void* room() { return const_cast<unsigned char*>(memory); }

    // The record that was built in it, seen through a pointer that the compiler does not follow.
    Record& record()
    {
        void* volatile hidden = room();
        return *static_cast<Record*>(hidden);
    }

private:
    alignas(Record) volatile unsigned char memory[sizeof(Record)];
};

// What a constructor stores: `build` runs it in memory full of 0xee.
template <typename Record>
std::string showBuilt(Record* (*build)(void*) = [](void* room) { return new (room) Record; })
{
    PatternedMemory<Record> memory;
    build(memory.room());
    const std::string text = show(memory.record());
    memory.record().~Record();
    return text;
}

// --- Bytes of a record ----------------------------------------------------------

// The same bytes with `length` in the length field at `at`.
inline QByteArray withLength(QByteArray bytes, int at, int length)
{
    bytes[at] = char(length);
    bytes[at + 1] = char(length >> 8);
    return bytes;
}

// --- Allocation -----------------------------------------------------------------

// Whether `operation` fails as a vector does that cannot grow.
template <typename Operation>
bool failsToAllocate(Operation operation)
{
    try {
        operation();
    } catch (const std::bad_alloc&) {
        return true;
    } catch (const std::length_error&) {
        return true;
    }
    return false;
}
