#pragma once

#include <QStringList>

#include <memory>
#include <string>
#include <vector>

// The client behind `call`, over either transport. All results: 1, or the code of the failure, as the frame clients
// give them (results.h).
class CallClient {
public:
    virtual ~CallClient() = default;

    virtual int connect(const std::string& host, int port) = 0;

    // A request with one integer, or with the two of setTime; `value` gets the integer of the reply.
    virtual int requestInt(unsigned char command, int argument, int& value) = 0;
    virtual int setTime(int first, int second, int& value) = 0;

    // A request with one integer, answered by a list of `count` elements.
    virtual int requestInts(unsigned char command, int argument, int count, std::vector<int>& out) = 0;
    virtual int requestBytes(unsigned char command, int argument, int count, std::vector<unsigned char>& out) = 0;
    virtual int requestStrings(unsigned char command, int argument, int count, QStringList& out) = 0;
};

std::unique_ptr<CallClient> makeTcpClient(int timeoutMs);
std::unique_ptr<CallClient> makeUdpClient(int timeoutMs);
