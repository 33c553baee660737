#pragma once

#include "shared/recordConstants.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <string>
#include <vector>

#include <byte2Rdb.h>
#include <fepRecords.h>
#include <recordWalk.h>

// The forms of bytes that gqtool knows, and the fields of each by name, in the order of the bytes. The fields of plain
// records are the lists that the library itself walks through (rdbFields.h, fepFields.h).

struct StoredWave {
    gqdb::BlobWaveHead head;
    std::vector<int> marks;
    std::vector<int> stored; // the integers of raw or quantised samples
    std::vector<float> samples;

    bool isRaw() const { return (head.waveFlags & rawSamples) != 0; }
    bool isQuantised() const { return !isRaw() && (head.waveFlags & quantisedSamples) != 0; }
    bool isCompressed() const { return (head.waveFlags & compressedSamples) != 0; }
};

// A walk through the fields of a record or list. What it does with each field is its own: take it off bytes or JSON,
// print it.
class Fields : public gqdb::CFieldListener {
public:
    Fields() = default;
    virtual ~Fields() = default;
    Fields(const Fields&) = delete;
    Fields& operator=(const Fields&) = delete;

    // --- A field each. In an item of a list that is no record, it has no name: null ---

    using CFieldListener::field;
    void field(const char* name, char& value) { field(name, reinterpret_cast<unsigned char&>(value)); }

    // Number of bytes on the wire of the last text of that name, its length included; 0 if the fields are not on a wire.
    virtual int wireSize(const char* /*name*/) const { return 0; }

    using CFieldListener::bytes;
    virtual void slot(const char* name, std::string& text) = 0;               // a text in 258 bytes
    virtual void bytes(const char* name, unsigned char* first, int size) = 0; // of a fixed number
    virtual void skip() = 0;                                                  // a byte that is no field
    virtual void samples(StoredWave& wave) = 0;                               // marks and samples of a wave

    // A text that the library's reader does not give back as it was: comparisons leave it out.
    virtual void lostText(const char* name, std::string& text) { field(name, text); }
    virtual void lostSlot(const char* name, std::string& text) { slot(name, text); }

    // --- Records and lists ---

    virtual void beginRecord(const char* name) = 0;
    virtual void endRecord() = 0;

    // A list behind a count of `countBytes`; with 0 bytes it has just `size` items. The number of items to walk.
    virtual unsigned int beginList(const char* name, int countBytes, size_t size) = 0;
    virtual bool beginItem(unsigned int index) = 0; // false to end the list
    virtual void endItem() = 0;
    virtual void endList() = 0;

    void array(const char* name, int* first, int count) override { walkArray(name, first, count); }
    void array(const char* name, float* first, int count) override { walkArray(name, first, count); }

    // --- Odd habits of the library's readers, told behind the last field of a record ---

    virtual void wantsInAll(int) {}    // so many bytes from the record's first byte on
    virtual void wantsBehind(int) {}   // so many bytes behind the record
    virtual void answerIsOffBy(int) {} // the reader's answer is the bytes consumed and so many more

private:
    template <typename Value>
    void walkArray(const char* name, Value* first, int size)
    {
        const unsigned int count = beginList(name, 0, static_cast<size_t>(size));
        for (unsigned int i = 0; i < count && beginItem(i); ++i) {
            field(nullptr, first[i]);
            endItem();
        }
        endList();
    }
};

// A record, a list or a wave as the library holds it.
class Content {
public:
    virtual ~Content() = default;
    virtual void walk(Fields& fields) = 0;
    virtual int read(const QByteArray& bytes) = 0;  // by the library's reader; its result
    virtual bool write(QByteArray& data) const = 0; // by its writer; false if that failed
};

struct ResultMeaning {
    int result;
    const char* meaning;
};

// What the library's reader answers on success.
enum Answer {
    answersOne,
    answersBytes, // consumed
};

// A form of bytes: what --as takes.
struct Form {
    const char* name;
    const char* content; // in words
    std::unique_ptr<Content> (*make)();
    const std::vector<ResultMeaning>* failures; // of the library's reader; null if it has none for this form
    Answer answer;
    int leastBytes = 0; // that the reader takes, where a list may have fewer
};

const std::vector<Form>& recordForms();
const Form* findForm(const QString& name);

// Append a list in the form that the library reads: without switch0, without flag1.
void writeReadable(const std::vector<gqdb::IntPoint>& list, QByteArray& data);
void writeReadable(const std::vector<gqdb::YbItem>& list, QByteArray& data);
