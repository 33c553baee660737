#pragma once
#include "shared/text.h"

#include <QByteArray>
#include <QString>

#include <array>
#include <functional>

// Bytes that are read in pieces.
class ByteSource {
public:
    ByteSource() = default;
    virtual ~ByteSource() = default;
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;

    // Appends the next bytes, at least one. Returns false at the end. If reading failed, error() is the whole message.
    virtual bool read(QByteArray& bytes) = 0;
    virtual QString error() const { return QString(); }

    // Returns a hint if the bytes look like another kind of input than the options say; otherwise empty.
    virtual QString hint() const { return QString(); }

    // Called before each read of a file: `isReady` is false if it may have to wait.
    std::function<void(bool isReady)> beforeRead = [](bool) {};

    // Number of bytes read so far and altogether, for the progress; 0 altogether if unknown.
    virtual long long done() const { return 0; }
    virtual long long total() const { return 0; }
};

class MemorySource : public ByteSource {
public:
    // Each read() returns `pieceSize` bytes, except the last.
    explicit MemorySource(QByteArray content, int pieceSize = 1 << 16);

    bool read(QByteArray& bytes) override;

private:
    QByteArray content;
    int pieceSize;
    int pos = 0;
};

class FileSource : public ByteSource {
public:
    explicit FileSource(QString file); // "-" is standard input
    ~FileSource() override;

    bool isStandardInput() const { return path == "-"; }
    QString name() const { return path == "-" ? QString(Text::tr("standard input")) : path; }

    bool read(QByteArray& bytes) override;
    QString error() const override;
    QString reason() const; // why it could not be read; empty on success
    long long done() const override { return count; }
    long long total() const override;

private:
    bool isReady() const;

    QString path;
    int descriptor;
    int failure = 0;
    long long count = 0;
    std::array<char, 1 << 16> piece;
};
