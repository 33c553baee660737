#pragma once

#include "support/descriptorsKept.h"

#include "gqFileLog.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include <unistd.h>

// A log with public access to its state.
class OpenFileLog : public CGqFileLog {
public:
    using CGqFileLog::CGqFileLog;
    using CGqFileLog::file;
    using CGqFileLog::fileMutex;
    using CGqFileLog::queue;
    using CGqFileLog::queueMutex;
    using CGqFileLog::savedCount;
    using CGqFileLog::withTime;
};

// A folder for the files of a test, which must not leave a descriptor open.
class LogFolder : public DescriptorsKept {
protected:
    void SetUp() override { ASSERT_TRUE(folder.isValid()); }

    QString path(const char* name) const { return folder.filePath(name); }

    bool exists(const char* name) const { return ::access(path(name).toUtf8().constData(), F_OK) == 0; }

    // The content of the file; empty if it does not exist.
    std::string content(const char* name) const
    {
        std::ifstream file(path(name).toStdString(), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    void write(const char* name, const std::string& text) const
    {
        std::ofstream(path(name).toStdString(), std::ios::binary) << text;
    }

    QTemporaryDir folder;
};
