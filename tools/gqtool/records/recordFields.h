#pragma once

#include "shared/recordConstants.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>
#include <string>
#include <vector>

#include <byte2Rdb.h>
#include <fepRecords.h>
#include <recordWalk.h>

// The forms of bytes that gqtool decodes and encodes, and the named fields of each, in the order of the bytes. The
// fields of plain records are the library's own lists (rdbFields.h, fepFields.h).

struct StoredWave {
    gqdb::BlobWaveHead head;
    std::vector<int> marks;
    std::vector<int> stored; // the integers of raw or quantised samples
    std::vector<float> samples;

    bool isRaw() const { return (head.waveFlags & rawSamples) != 0; }
    bool isQuantised() const { return !isRaw() && (head.waveFlags & quantisedSamples) != 0; }
    bool hasIntegers() const { return isRaw() || isQuantised(); }
    bool isCompressed() const { return (head.waveFlags & compressedSamples) != 0; }
};

// Visits the fields of a record or list. Derived classes read them from bytes or JSON, or print them.
class Fields : public gqdb::CFieldListener {
public:
    Fields() = default;
    virtual ~Fields() = default;
    Fields(const Fields&) = delete;
    Fields& operator=(const Fields&) = delete;

    // --- Fields. The name is null for a list item that is not a record ---

    using CFieldListener::field;
    void field(const char* name, char& value) { field(name, reinterpret_cast<unsigned char&>(value)); }

    // Number of bytes on the wire of the last text of that name, including its length; 0 if there are no bytes.
    virtual int wireSize(const char* /*name*/) const { return 0; }

    using CFieldListener::bytes;
    virtual void slot(const char* name, std::string& text) = 0;               // a text in 258 bytes
    virtual void bytes(const char* name, unsigned char* first, int size) = 0; // of a fixed number
    virtual void skip() = 0;                                                  // a byte that is no field
    virtual void samples(StoredWave& wave) = 0;                               // marks and samples of a wave

    // A text that the library's reader does not return unchanged. Comparisons leave it out.
    virtual void lostText(const char* name, std::string& text) { field(name, text); }
    virtual void lostSlot(const char* name, std::string& text) { slot(name, text); }

    // --- Records and lists ---

    virtual void beginRecord(const char* name) = 0;
    virtual void endRecord() = 0;

    // Begins a list after a count of `countBytes` bytes; with 0 bytes it has exactly `size` items. Returns the number
    // of items to visit.
    virtual unsigned int beginList(const char* name, int countBytes, size_t size) = 0;
    virtual bool beginItem(unsigned int index) = 0; // false to end the list
    virtual void endItem() = 0;
    virtual void endList() = 0;

    void array(const char* name, int* first, int count) override { walkArray(name, first, count); }
    void array(const char* name, float* first, int count) override { walkArray(name, first, count); }

    // --- Deliberate oddities of the library's readers, reported after the last field of a record ---

    virtual void readerNeeds(int) {}      // at least that many bytes from the record's first byte on
    virtual void readerNeedsAfter(int) {} // at least that many bytes after the record
    virtual void resultIsOffBy(int) {}    // the reader's result minus the number of bytes consumed

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

// Visits a list: its count, and each item by `walkItem(index)`.
template <typename WalkItem>
void walkList(Fields& fields, size_t size, const WalkItem& walkItem)
{
    const unsigned int count = fields.beginList(nullptr, 4, size);
    for (unsigned int i = 0; i < count && fields.beginItem(i); ++i) {
        walkItem(static_cast<size_t>(i));
        fields.endItem();
    }
    fields.endList();
}

// A record, a list or a wave as the library holds it.
class Content {
public:
    virtual ~Content() = default;
    virtual void walk(Fields& fields) = 0;
    virtual int read(const QByteArray& bytes) = 0;  // by the library's reader; returns its result
    virtual bool write(QByteArray& data) const = 0; // by its writer; returns false on failure

    // Makes an item of a list, which on the wire is the count (4 bytes) and such items. Null for anything else.
    virtual std::unique_ptr<Content> makeItem() const { return nullptr; }
};

struct ResultMeaning {
    int result;
    const char* meaning;
};

// What the library's reader returns on success.
enum ReaderResult {
    returnsOne,
    returnsBytes, // consumed
};

// A form of bytes: what --as takes.
struct Form {
    const char* name;
    const char* content; // description
    std::unique_ptr<Content> (*make)();
    const std::vector<ResultMeaning>* failures; // of the library's reader; null if it has none for this form
    ReaderResult onSuccess;
    int leastBytes = 0; // that the reader needs, although a list may have fewer
};

const std::vector<Form>& recordForms();
const Form* findForm(const QString& name);
QStringList formNames();
bool isList(const Form& form);

// Append a list in the form that the library reads: without switch0, without flag1.
void writeReadable(const std::vector<gqdb::IntPoint>& list, QByteArray& data);
void writeReadable(const std::vector<gqdb::YbItem>& list, QByteArray& data);
