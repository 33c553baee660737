#pragma once

#include <QByteArray>
#include <QTemporaryFile>

#include <functional>
#include <string_view>

// Bytes that are kept until they are printed: a few in memory, many in a temporary file.
class Spool {
public:
    void add(std::string_view bytes);

    // Passes all bytes to `print`, in order. Returns false and the reason if they could not be kept.
    bool printAll(const std::function<void(const QByteArray& bytes)>& print, QString& error);

private:
    void check(bool isDone);

    long long size = 0;
    QByteArray memory; // the last bytes
    QTemporaryFile file;
    bool isBroken = false;
    QString fileError; // the first
};
