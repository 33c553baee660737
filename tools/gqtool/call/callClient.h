#pragma once

#include "gqtool/probe/linkCause.h"

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
    int count = 0; // of the elements that a list is to hold in the end; with 0 a single frame is the whole reply
};

struct CallReply {
    int result = 0; // 1, or the code of the failure, as the frame clients give them
    LinkCause cause = LinkCause::healthy;
    QString meaning;         // of the result, in words
    double milliseconds = 0; // from the request to the end of its reply; making the connection is not counted
    std::vector<int> ints;   // the one integer of replyInt too; a list that failed holds what came ahead
    QByteArray bytes;
    QStringList texts;
};

// The client behind `call`, over either transport.
class CallClient {
public:
    virtual ~CallClient() = default;

    // Connects ahead of the first request, and anew behind one that failed: what may still come on the old connection
    // is not to pass for the next reply.
    CallReply call(const CallRequest& request);

protected:
    // On a new socket, with nothing left of the last one. 1, or the code of the failure, with cause and meaning in
    // `reply`.
    virtual int connect(CallReply& reply) = 0;

    // 1, or the code of the failure, which explainFailure then explains in `reply`.
    virtual int exchange(const CallRequest& request, CallReply& reply) = 0;
    virtual void explainFailure(const CallRequest& request, CallReply& reply) const = 0;

private:
    bool isUp = false;
};

std::unique_ptr<CallClient> makeTcpClient(const std::string& host, int port, int timeoutMs);
std::unique_ptr<CallClient> makeUdpClient(const std::string& host, int port, int timeoutMs);
