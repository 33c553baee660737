#pragma once

#include <QByteArray>
#include <QFileDevice>
#include <QString>

#include <memory>

// A file to write, or standard output for "-". A file that exists keeps its content until end().
class OutputFile {
public:
    explicit OutputFile(const QString& path);

    // Opens the file, or prints an error and returns false.
    bool open();

    void add(const QByteArray& bytes);

    // Puts the file in its place. Returns true if everything was written, else prints the error.
    bool end();

    // Leaves the file as it was and prints an error. Returns false.
    bool discard();

private:
    bool check(bool isDone);
    bool fail() const;

    QString path;
    std::unique_ptr<QFileDevice> file; // null for standard output
    bool isGood = true;
    QString error; // the first
};
