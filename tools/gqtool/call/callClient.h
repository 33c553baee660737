#pragma once

#include "gqtool/probe/linkCause.h"
#include "shared/text.h"

#include <QByteArray>
#include <QStringList>

#include <memory>
#include <string>
#include <vector>

enum ReplyForm { replyInt, replyInts, replyBytes, replyStrings };

struct CallRequest {
    unsigned char command = 0;
    unsigned char arg1 = 0;
    unsigned char arg2 = 0;
    QByteArray payload;
    ReplyForm form = replyInt;
    int count = 0; // of the elements that a list must reach; with 0 one frame is the whole reply
};

struct CallReply {
    int result = 0; // 1, or the code of the failure that the library's client returned
    LinkCause cause = LinkCause::healthy;
    Text meaning;            // of the result, in words
    double milliseconds = 0; // from the request to the end of its reply, without connecting
    std::vector<int> ints;   // for replyInt, one; a failed list holds the elements before the failure
    QByteArray bytes;
    QStringList texts;
};

// The client of `call`, over either transport.
class CallClient {
public:
    virtual ~CallClient() = default;

    // Connects before the first request, and again if something may still arrive for an earlier one: it must not be
    // taken for the next reply.
    CallReply call(const CallRequest& request);

protected:
    // Connects if necessary. Returns 1, or the code of the failure with cause and meaning in `reply`.
    virtual int makeReady(CallReply& reply) = 0;

    // Returns 1, or the code of the failure, which explainFailure then explains in `reply`.
    virtual int exchange(const CallRequest& request, CallReply& reply) = 0;
    virtual void explainFailure(const CallRequest& request, CallReply& reply) const = 0;
};

std::unique_ptr<CallClient> makeTcpClient(const std::string& host, int port, int timeoutMs);
std::unique_ptr<CallClient> makeUdpClient(const std::string& host, int port, int timeoutMs);
