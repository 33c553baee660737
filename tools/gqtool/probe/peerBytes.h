#pragma once

#include "linkCause.h"

#include <QByteArray>

// What the bytes of a peer reveal about the link.
struct ByteVerdict {
    LinkCause cause = LinkCause::healthy; // without any bytes `silent` or `noReply`
    bool isFinal = false;                 // no further bytes can change it
    int value = 0;                        // the integer of a good frame, the code of an error frame
    QString protocol;                     // if foreign: "ssh", "http", "tls" or "unknown"
    QString detail;
};

enum class AwaitedBytes {
    greeting,   // the first bytes of a connection
    firstReply, // the first bytes that come from a peer that does not greet
    reply,      // after a frame: the peer is no foreign server
};

// Judges the bytes that came where a frame was awaited, as a client takes them: it skips what precedes a start byte,
// and takes the first frame. Any bytes will do.
ByteVerdict judgeBytes(const QByteArray& bytes, AwaitedBytes awaited);

// The first bytes as quoted text, with \r, \n, \t and . for what cannot be shown.
QString visibleText(const QByteArray& bytes);

static const int shownPeerBytes = 64;
