#pragma once

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

// A file with this content, removed with the object.
class InputFile {
public:
    explicit InputFile(const QByteArray& content) : path(folder.filePath("input"))
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(content), content.size());
    }

private:
    QTemporaryDir folder;

public:
    const QString path; // in the folder
};
