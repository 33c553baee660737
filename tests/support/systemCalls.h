#pragma once

#include <QByteArray>

#include <memory>
#include <string>
#include <vector>

#include <pthread.h>
#include <termios.h>

class SystemCallScript;

// The last arguments of a setsockopt(2) that sets a time: its bytes and their number. `wide` has seconds and microseconds
// of 8 bytes each; where time_t has 4, so has each of them.
std::string timeOption(const std::string& wide);

// Replaces the system. The test program defines the libc functions that the library calls (systemCalls.cpp), and the
// dynamic linker binds the library to them. While an object of this class exists, such calls of its thread are recorded
// and answered from a script, and none reaches the system. Otherwise they are forwarded to libc.
//
//     SystemCalls calls;
//     calls.answer("socket", 7);
//     CTcpSocket socket;
//     EXPECT_EQ(calls.take(), "socket(AF_INET, SOCK_STREAM, 0)\n"
//                             "setsockopt(7, IPPROTO_TCP, TCP_NODELAY, [01], 1)\n" ...
//
// Each call is a line: its name and its arguments in order. Constants are shown by name, other numbers in decimal,
// bytes in memory in hex: a value or data as [01 00], an IPv4 address as {AF_INET, port, address} in memory order, a
// CAN address as {AF_CAN, index}. The set of a select is {7, 9} and shows the descriptors below its count, or null; a
// time is {seconds, microseconds}. A buffer that the call fills is shown only by its size.
class SystemCalls {
public:
    SystemCalls();
    ~SystemCalls(); // fails the running test if an answer was not used
    SystemCalls(const SystemCalls&) = delete;
    SystemCalls& operator=(const SystemCalls&) = delete;

    // Sets the result and the output bytes of the next call of the function that has no answer yet. A call without an
    // answer returns 0 and outputs nothing. Only `refuse` changes errno. The output of recvfrom is as many bytes as its
    // result, followed by the sender's address; that of ioctl is the index of an interface.
    void answer(const std::string& function, long result, const QByteArray& out = {});
    void refuse(const std::string& function, int error); // -1 and this errno

    // Sets the descriptors that a select leaves in its sets. A select without an answer times out. As in the system,
    // sets are written in whole words up to the count, and not at all if the result is negative.
    using Descriptors = std::vector<int>;
    void answerSelect(int result, const Descriptors& readable, const Descriptors& writable,
                      const Descriptors& exceptional);

    // The arguments of the latest pthread_create apart from the attributes. It creates no thread; its answer outputs
    // the handle. Attributes are shown as {detach state, inheritance of scheduling}, those of a mutex as its type,
    // followed by "and more" if more was set.
    struct NewThread {
        pthread_t* handle = nullptr;
        void* (*entry)(void*) = nullptr;
        void* argument = nullptr;
    };
    NewThread newThread() const;

    // Names a mutex that was initialised while recording; the default is "mutex 1", "mutex 2" and so on. Calls on all
    // other mutexes, such as those of the test framework, are forwarded to libc.
    void name(const pthread_mutex_t& mutex, const std::string& text);

    // The parameters passed to the latest tcsetattr.
    termios lineSettings() const;

    // Returns the calls since the last time, each followed by a newline.
    std::string take();

private:
    std::unique_ptr<SystemCallScript> script;
};
