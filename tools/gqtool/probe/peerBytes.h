#pragma once

#include "gqtool/frames/frameStream.h"
#include "linkCause.h"

#include <QByteArray>

#include <optional>

// What the bytes of a peer reveal about the link.
struct ByteVerdict {
    LinkCause cause = LinkCause::healthy; // `silent` or `noReply` if there are no bytes
    bool isFinal = false;                 // no further bytes can change it
    std::optional<Frame> frame;           // the valid frame
    std::optional<Frame> next;            // a frame after it in the same bytes, which a client drops
    int value = 0;                        // its integer, or the code of an error frame
    QString protocol;                     // if foreign: "ssh", "http", "tls" or "unknown"
    Text detail;
};

enum class AwaitedBytes {
    greeting,   // the first bytes of a connection
    firstReply, // the first bytes of a peer that does not greet
    reply,      // bytes after a frame, which has shown that the peer is not a foreign server
};

// Judges the bytes that arrived instead of the awaited frame, or with it. Like a client, it skips the bytes before a
// start byte and examines only the first frame.
ByteVerdict judgeBytes(const QByteArray& bytes, AwaitedBytes awaited);

// Returns the first bytes as quoted text, with \r, \n and \t, and a dot for other unprintable bytes.
QString visibleText(const QByteArray& bytes);

static const int shownPeerBytes = 64;
