#pragma once

#include "gqtool/probe/linkCause.h"
#include "shared/text.h"

#include <QByteArray>
#include <QStringList>

#include <memory>
#include <string>
#include <vector>

enum ReplyForm { replyInt, replyInts, replyBytes, replyStrings }; // in the order of replyForms()

struct CallRequest {
    unsigned char command = 0;
    unsigned char arg1 = 0;
    unsigned char arg2 = 0;
    QByteArray payload;
    ReplyForm form = replyInt;
    int count = 0; // of the elements that a list must reach; with 0 one frame is the whole reply
};

struct CallReply {
    int result = 0; // as from the library's client; 1 is success, or an error frame with code 1
    LinkCause cause = LinkCause::healthy;
    Text meaning;            // of the result, in words
    double milliseconds = 0; // from the request to the end of its reply, without connecting
    std::vector<int> ints;   // for replyInt, one; a failed list holds the elements before the failure
    QByteArray bytes;
    QStringList texts;
    bool hasFrame = false; // the last frame arrived whole: the link works
    Text warning;          // of a good reply that may not be what it seems; empty if there is none
    Text commandMismatch;  // why the last frame is not the reply to the request; empty if it may be

    bool isGood() const { return cause == LinkCause::healthy; }
    void fail(int code, LinkCause why, const Text& text)
    {
        result = code;
        cause = why;
        meaning = text;
    }

    // Fails because the payload does not have the requested form. The text begins with commandMismatch, if there is
    // one.
    void failForm(int code, const Text& text);
};

// The client of `call`, over either transport.
class CallClient {
public:
    virtual ~CallClient() = default;

    // Connects before the first request, and again if something may still arrive for an earlier one: it must not be
    // taken for the next reply.
    CallReply call(const CallRequest& request);

protected:
    // Connects if necessary. Returns false with the failure in `reply`.
    virtual bool makeReady(CallReply& reply) = 0;

    // Sends the request and receives its reply, or fails in `reply`.
    virtual void exchange(const CallRequest& request, CallReply& reply) = 0;
};

std::unique_ptr<CallClient> makeTcpClient(const std::string& host, int port, int timeoutMs);
std::unique_ptr<CallClient> makeUdpClient(const std::string& host, int port, int timeoutMs);
