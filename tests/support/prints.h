#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <iostream>
#include <string>

#include <unistd.h>

// Collects what is printed to standard output, by printf(3) and by std::cout.
class Prints {
public:
    Prints() = default;
    Prints(const Prints&) = delete;
    Prints& operator=(const Prints&) = delete;

    ~Prints()
    {
        std::fclose(file);
        std::fclose(programs);
    }

    // Descriptor 1 refers to a file meanwhile.
    int of(const std::function<int()>& operation)
    {
        flush();
        ::dup2(::fileno(file), STDOUT_FILENO);
        const int result = operation();
        flush();
        ::dup2(::fileno(programs), STDOUT_FILENO);
        return result;
    }

    std::string take()
    {
        const int descriptor = ::fileno(file);
        std::string text(size_t(::lseek(descriptor, 0, SEEK_CUR)), '\0');
        EXPECT_EQ(::pread(descriptor, text.data(), text.size(), 0), ssize_t(text.size()));
        ::lseek(descriptor, 0, SEEK_SET);
        return text;
    }

private:
    static void flush()
    {
        std::cout.flush();
        std::fflush(stdout);
    }

    std::FILE* file = std::tmpfile();
    std::FILE* programs = ::fdopen(::dup(STDOUT_FILENO), "w");
};
