#pragma once

#include <QByteArray>

#include <memory>
#include <string>
#include <vector>

#include <pthread.h>
#include <termios.h>

class SystemCallScript;

// Stands in for the system. The test program defines the libc functions that the library calls (systemCalls.cpp), and
// the dynamic linker binds the library to these. While an object of this class lives, such calls of its thread are
// written down and answered from a script, and none reaches the system; otherwise they go on to libc.
//
//     SystemCalls calls;
//     calls.answer("socket", 7);
//     CTcpSocket socket;
//     EXPECT_EQ(calls.take(), "socket(AF_INET, SOCK_STREAM, 0)\n"
//                             "setsockopt(7, IPPROTO_TCP, TCP_NODELAY, [01], 1)\n" ...
//
// A call is a line: its name and what it was given, in the order of the arguments. Constants go by name, other numbers
// are decimal, bytes in memory hex: a value or data as [01 00], an IPv4 address as {AF_INET, port, address} in the
// order of its bytes, a CAN address as {AF_CAN, index}. The set of a select is {7, 9} and shows the descriptors below
// its count, a null one is null, and a time is {seconds, microseconds}. A buffer that the call is to fill shows as its
// size alone.
class SystemCalls {
public:
    SystemCalls();
    ~SystemCalls(); // fails the running test if an answer was never fetched
    SystemCalls(const SystemCalls&) = delete;
    SystemCalls& operator=(const SystemCalls&) = delete;

    // What the next call of the function gives that has no answer yet: its result, and the bytes that it hands out. A
    // call without an answer gives 0 and hands out nothing. errno changes in `refuse` alone. What recvfrom hands out is
    // as many bytes as its result says, and the sender's address behind them; what ioctl hands out is the index of an
    // interface.
    void answer(const std::string& function, long result, const QByteArray& out = {});
    void refuse(const std::string& function, int error); // -1 and this errno

    // A select with the descriptors that it leaves in its sets; without an answer it is a time-out. As in the system, a
    // set is written in whole words of 64 bits up to the count, and not at all below a result of 0.
    using Descriptors = std::vector<int>;
    void answerSelect(int result, const Descriptors& readable, const Descriptors& writable,
                      const Descriptors& exceptional);

    // What the latest pthread_create was given beside the attributes. It makes no thread; its answer hands the handle
    // out. Attributes show as {detach state, inheritance of scheduling}, and as more than that if more was set.
    struct NewThread {
        pthread_t* handle = nullptr;
        void* (*entry)(void*) = nullptr;
        void* argument = nullptr;
    };
    NewThread newThread() const;

    // The name in the lines to come of a mutex that pthread_mutex_init was asked for meanwhile; from there it is
    // "mutex 1", "mutex 2" and so on. Calls on all other mutexes, such as those of the test framework, go on to libc.
    void name(const pthread_mutex_t& mutex, const std::string& text);

    // What the latest tcsetattr was given beside the line.
    termios lineSettings() const;

    // The calls since the last time, each with a newline behind it.
    std::string take();

private:
    std::unique_ptr<SystemCallScript> script;
};
