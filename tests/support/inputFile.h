#pragma once

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

// A file, removed with the object.
class InputFile {
public:
    explicit InputFile(const QByteArray& content) : path(folder.filePath("input"))
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(content), content.size());
    }

    // Zeros that take no room on the disk.
    explicit InputFile(qint64 size) : InputFile("") { EXPECT_TRUE(QFile::resize(path, size)); }

private:
    QTemporaryDir folder;

public:
    const QString path; // in the folder
};
