#pragma once

#include "byteText.h"

#include <QByteArray>
#include <QString>

#include <cstring>
#include <string>
#include <vector>

// The fields of each record are listed once, in wire order, by a function `walk` in rdbFields.h or fepFields.h. The
// class that is passed to it determines what it does with each field:
//   CRecordSize    counts the bytes that the record has when it is written
//   CRecordWriter  writes them to a buffer that is large enough
//   CRecordReader  reads them
//   CFieldsShown   passes name and value of each field to a listener, which may change the value: for tools
// Everything is inlined, so that each caller contains one of the four jobs and no names. Internal.
namespace gqdb {

// Receives the fields of a record, one call each. A name is that of the record's member.
class CFieldListener {
public:
    virtual void field(const char* name, unsigned char& value) = 0;
    virtual void field(const char* name, unsigned int& value) = 0;
    virtual void field(const char* name, int& value) = 0;
    virtual void field(const char* name, float& value) = 0;
    virtual void field(const char* name, double& value) = 0;
    virtual void field(const char* name, std::string& text) = 0;
    virtual void field(const char* name, QString& text) = 0;
    virtual void bytes(const char* name, std::vector<unsigned char>& value) = 0; // after a length of 4 bytes
    virtual void array(const char* name, int* first, int count) = 0;             // of a fixed number
    virtual void array(const char* name, float* first, int count) = 0;

protected:
    ~CFieldListener() = default;
};

// IntPoint and YbItem are written with a byte that their readers do not expect. All other records have one form.
enum class RecordForm { written, read };

class CRecordWalk {
public:
    [[gnu::always_inline]] bool isWrittenForm() const { return form == RecordForm::written; }

    // Returns true if `count` bytes are left to read. Always true if nothing is read.
    [[gnu::always_inline]] bool holds(int count) const { return job != reading || end - from >= count; }

    // 1 byte.
    [[gnu::always_inline]] void byte(const char* name, char& value)
    {
        if (job == showing)
            listener->field(name, reinterpret_cast<unsigned char&>(value));
        else if (job == measuring)
            size += 1;
        else if (job == writing)
            *to++ = value;
        else
            value = *from++;
    }

    // 4 bytes.
    [[gnu::always_inline]] void word(const char* name, unsigned int& value)
    {
        if (job == showing)
            listener->field(name, value);
        else
            move32(value);
    }
    [[gnu::always_inline]] void word(const char* name, int& value)
    {
        if (job == showing)
            listener->field(name, value);
        else
            move32(reinterpret_cast<unsigned int&>(value));
    }
    [[gnu::always_inline]] void real(const char* name, float& value)
    {
        if (job == showing)
            listener->field(name, value);
        else
            moveFloat(value);
    }

    // 8 bytes.
    [[gnu::always_inline]] void real(const char* name, double& value)
    {
        if (job == showing) {
            listener->field(name, value);
        } else if (job == measuring) {
            size += 8;
        } else if (job == writing) {
            store64(doubleImage(value), to);
            to += 8;
        } else {
            value = imageDouble(load64(from));
            from += 8;
        }
    }

    // 4 bytes each.
    [[gnu::always_inline]] void words(const char* name, int* first, int count)
    {
        if (job == showing)
            return listener->array(name, first, count);
        for (int i = 0; i < count; ++i)
            move32(reinterpret_cast<unsigned int&>(first[i]));
    }
    [[gnu::always_inline]] void reals(const char* name, float* first, int count)
    {
        if (job == showing)
            return listener->array(name, first, count);
        for (int i = 0; i < count; ++i)
            moveFloat(first[i]);
    }

    // A string: its length (2 bytes, the low 16 bits) and its bytes. Returns false if it is incomplete.
    [[gnu::always_inline]] bool text(const char* name, std::string& value)
    {
        if (job == showing)
            listener->field(name, value);
        else if (job == measuring)
            size += textSize(value);
        else if (job == writing)
            writeText(value);
        else
            return skip(takeString(from, left(), value));
        return true;
    }

    // The same, as UTF-8. Measuring stores the UTF-8 bytes for the writer.
    [[gnu::always_inline]] bool text(const char* name, QString& value)
    {
        if (job == showing)
            listener->field(name, value);
        else if (job == measuring)
            size += textSize(value, *utf8++);
        else if (job == writing)
            to = putText(*utf8++, to);
        else
            return skip(takeString(from, left(), value));
        return true;
    }

    // A length (4 bytes) and as many bytes. Returns false if they are not there. A length of 2^31 or more makes the
    // vector raise std::length_error.
    [[gnu::always_inline]] bool bytes(const char* name, std::vector<unsigned char>& value)
    {
        if (job == showing) {
            listener->bytes(name, value);
            return true;
        }
        auto length = static_cast<unsigned int>(value.size());
        move32(length);
        if (job == measuring) {
            size += static_cast<long long>(value.size());
        } else if (job == writing) {
            copyBytes(value.data(), value.size(), to);
            to += value.size();
        } else {
            if (static_cast<int>(length) > left())
                return false;
            value.resize(static_cast<size_t>(static_cast<int>(length)));
            copyBytes(from, value.size(), value.data());
            from += value.size();
        }
        return true;
    }

protected:
    enum Job { measuring, writing, reading, showing };

    [[gnu::always_inline]] CRecordWalk(Job theJob, RecordForm theForm) : job(theJob), form(theForm) {}

    [[gnu::always_inline]] int left() const { return static_cast<int>(end - from); }

    Job job;
    RecordForm form;
    long long size = 0;
    char* to = nullptr;
    const char* from = nullptr;
    const char* end = nullptr;
    QByteArray* utf8 = nullptr; // of the next text
    CFieldListener* listener = nullptr;

private:
    [[gnu::always_inline]] void move32(unsigned int& value)
    {
        if (job == measuring) {
            size += 4;
        } else if (job == writing) {
            store32(value, to);
            to += 4;
        } else {
            value = load32(from);
            from += 4;
        }
    }
    [[gnu::always_inline]] void moveFloat(float& value)
    {
        unsigned int image = floatImage(value);
        move32(image);
        if (job == reading)
            value = imageFloat(image);
    }
    [[gnu::always_inline]] void writeText(const std::string& value)
    {
        const size_t count = writtenBytes(value);
        store16(static_cast<unsigned int>(value.size()), to);
        copyText(value.data(), count, to + 2);
        to += 2 + count;
    }
    [[gnu::always_inline]] bool skip(int count)
    {
        from += count;
        return count > 0;
    }
    [[gnu::always_inline]] static void copyBytes(const void* source, size_t count, void* target)
    {
        if (count > 0) // an empty vector has no bytes to point to
            std::memcpy(target, source, count);
    }
};

class CRecordSize : public CRecordWalk {
public:
    // `texts` has an element for each QString of the record, which receives its UTF-8 bytes.
    explicit CRecordSize(QByteArray* texts = nullptr, RecordForm ofForm = RecordForm::written)
        : CRecordWalk(measuring, ofForm)
    {
        utf8 = texts;
    }

    long long bytes() const { return size; }
};

class CRecordWriter : public CRecordWalk {
public:
    // `texts` is the array that CRecordSize has filled.
    explicit CRecordWriter(char* room, QByteArray* texts = nullptr, RecordForm ofForm = RecordForm::written)
        : CRecordWalk(writing, ofForm)
    {
        to = room;
        utf8 = texts;
    }
};

class CRecordReader : public CRecordWalk {
public:
    CRecordReader(const char* buf, int count) : CRecordWalk(reading, RecordForm::read), first(buf)
    {
        from = buf;
        end = buf + count;
    }

    int used() const { return static_cast<int>(from - first); }

private:
    const char* first;
};

class CFieldsShown : public CRecordWalk {
public:
    CFieldsShown(CFieldListener& theListener, RecordForm ofForm) : CRecordWalk(showing, ofForm)
    {
        listener = &theListener;
    }
};

} // namespace gqdb
