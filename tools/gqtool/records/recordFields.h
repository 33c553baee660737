#pragma once

#include "shared/recordConstants.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <string>
#include <vector>

#include <byte2Rdb.h>

// The fields of every record by name, in the order of the bytes: one description, which decoding, encoding and tests
// walk through.

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
class Fields {
public:
    Fields() = default;
    virtual ~Fields() = default;
    Fields(const Fields&) = delete;
    Fields& operator=(const Fields&) = delete;

    // --- A field each. In an item of a list that is no record, it has no name: null ---

    virtual void field(const char* name, unsigned char& value) = 0;
    virtual void field(const char* name, unsigned int& value) = 0;
    virtual void field(const char* name, int& value) = 0;
    virtual void field(const char* name, float& value) = 0;
    virtual void field(const char* name, double& value) = 0;
    void field(const char* name, char& value) { field(name, reinterpret_cast<unsigned char&>(value)); }

    // Texts behind a length of 2 bytes. The bytes on the wire, length and all; 0 where the walk has no wire.
    virtual int field(const char* name, std::string& text) = 0;
    virtual int field(const char* name, QString& text) = 0;

    virtual void slot(const char* name, std::string& text) = 0;                  // a text in 258 bytes
    virtual void bytes(const char* name, unsigned char* first, int size) = 0;    // of a fixed number
    virtual void bytes(const char* name, std::vector<unsigned char>& value) = 0; // behind a length of 4 bytes
    virtual void skip() = 0;                                                     // a byte that is no field
    virtual void samples(StoredWave& wave) = 0;                                  // marks and samples of a wave

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

    // --- Odd habits of the library's readers, told behind the last field of a record ---

    virtual void wantsInAll(int) {}    // so many bytes from the record's first byte on
    virtual void wantsBehind(int) {}   // so many bytes behind the record
    virtual void answerIsOffBy(int) {} // the reader's answer is the bytes consumed and so many more
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
