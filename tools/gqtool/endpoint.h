#pragma once

#include <QString>
#include <QStringList>

// Where a server is: what HOST:PORT on the command line says.
struct Endpoint {
    QString host; // a name or a dotted IPv4 address
    int port = 0;

    QString text() const { return QString("%1:%2").arg(host).arg(port); }
};

// Reads HOST:PORT. Returns what is wrong with it, or an empty text.
QString readEndpoint(const QString& text, Endpoint& endpoint);

// Returns what is wrong with a dotted IPv4 address, or an empty text. "127.1" is one.
QString addressError(const QString& text);

// Looks up the IPv4 addresses of a host, the frame protocol has no other, for at most `timeoutMs`. True with one or
// more dotted addresses; false with the reason in `error`.
bool resolveHost(const QString& host, int timeoutMs, QStringList& addresses, QString& error);
