#pragma once

#include "support/descriptorsKept.h"

#include "gqFileLog.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include <unistd.h>

// A log with its state in the open.
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

// A folder for the files of a test, behind which no descriptor may be left over.
class LogFolder : public DescriptorsKept {
protected:
    void SetUp() override { ASSERT_TRUE(folder.isValid()); }

    QString path(const char* name) const { return folder.filePath(name); }

    bool exists(const char* name) const { return ::access(path(name).toUtf8().constData(), F_OK) == 0; }

    // All of the file; empty too if there is none.
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
