#pragma once

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

inline QByteArray contentOf(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

inline void writeTo(const QString& path, const QByteArray& content)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
    EXPECT_EQ(file.write(content), content.size());
}

// A file, removed with the object.
class InputFile {
public:
    explicit InputFile(const QByteArray& content) : path(folder.filePath("input")) { writeTo(path, content); }

    // Zeros that take no room on the disk.
    explicit InputFile(qint64 size) : InputFile("") { EXPECT_TRUE(QFile::resize(path, size)); }

private:
    QTemporaryDir folder;

public:
    const QString path; // in the folder
};
