#pragma once
#include "shared/text.h"

#include <QString>
#include <QStringList>

// The address of a server, HOST:PORT on the command line.
struct Endpoint {
    QString host; // a name or a dotted IPv4 address
    int port = 0;

    QString text() const { return QString("%1:%2").arg(host).arg(port); }
};

// Reads HOST:PORT. Returns the error, or an empty text on success.
QString readEndpoint(const QString& text, Endpoint& endpoint);

// Returns the error in a dotted IPv4 address, or an empty text if it is valid.
QString addressError(const QString& text);

// Looks up the IPv4 addresses of a host, which the frame protocol needs, for at most `timeoutMs`. Returns true with at
// least one dotted address, or false with the reason in `error`.
bool resolveHost(const QString& host, int timeoutMs, QStringList& addresses, Text& error);
