#pragma once

#include "gqtool/bytes/byteWindow.h"
#include "shared/text.h"

#include <QByteArray>
#include <QString>

#include <vector>

struct Fault {
    long long offset = 0;
    Text text;
};

// The first faults, up to a limit, and the number of the others.
class FaultList {
public:
    static constexpr int usualLimit = 20;

    explicit FaultList(size_t most) : limit(most) {}

    // Returns false if the limit is exceeded.
    bool add(long long offset, const Text& text) { return insert(all.size(), offset, text); }
    bool insert(size_t index, long long offset, const Text& text);

    const std::vector<Fault>& listed() const { return all; }
    long long others() const { return more; }

private:
    size_t limit;
    std::vector<Fault> all;
    long long more = 0;
};

// What a decoding results in, apart from the fields.
struct Decoding {
    explicit Decoding(size_t mostFaults) : faults(mostFaults) {}

    FaultList faults; // none if the library's reader accepts the bytes
    long long restOffset = 0;
    QByteArray restStart; // first bytes that are not decoded
    bool isRisky = false; // a count or length would make the library's reader allocate too much memory

    bool readerCalled = false;
    int result = 0; // of the library's reader
    Text meaning;   // of the result, or why the reader was not called

    // Ends the fields at the position of `bytes`.
    void stopAt(ByteWindow& bytes);
};
