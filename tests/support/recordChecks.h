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

// Returns true if the offsets, given in the order of the declaration, are ascending.
constexpr bool ascending(std::initializer_list<size_t> offsets)
{
    size_t next = 0;
    for (size_t offset : offsets) {
        if (offset < next)
            return false;
        next = offset + 1;
    }
    return true;
}

// Returns true if all these fields, given as &Record::field, have one type: allAre<char Record::*>(...).
template <typename Field, typename... Fields>
constexpr bool allAre(Fields...)
{
    return (std::is_same_v<Field, Fields> && ...);
}

// --- Floating-point numbers from their bits -------------------------------------

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

// One field per line, as its bytes in memory, so that a failed comparison names the field. A NaN is equal to itself.
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

// All records of a list. The test defines show() of one record, in the namespace of the record so that it is found.
template <typename Record>
std::string showAll(const std::vector<Record>& list)
{
    std::string text;
    for (const Record& record : list)
        text += show(record) + "--\n";
    return text;
}

// --- What a constructor leaves uninitialised ------------------------------------

// Memory full of 0xee for one record. Volatile, so that the compiler neither drops the pattern before a constructor
// nor assumes the value of an uninitialised field.
template <typename Record>
class PatternedMemory {
public:
    PatternedMemory()
    {
        for (volatile unsigned char& byte : memory)
            byte = 0xee;
    }

    void* room() { return const_cast<unsigned char*>(memory); }

    // The record constructed in it, through a pointer that the compiler cannot trace.
    Record& record()
    {
        void* volatile hidden = room();
        return *static_cast<Record*>(hidden);
    }

private:
    alignas(Record) volatile unsigned char memory[sizeof(Record)];
};

// Shows what a constructor stores: `build` calls it in memory full of 0xee.
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

// Returns true if `operation` fails as a vector that cannot grow does.
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
