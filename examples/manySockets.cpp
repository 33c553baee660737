// Connects to many servers at once and prints which of them accept, and the first bytes that each sends.
//   manySockets HOST:PORT...     against: gqtool station, which greets

#include <gqLib/byte2Val.h>
#include <gqLib/gqLibUnix.h>
#include <gqLib/gqSocketUnix.h>

#include <cstdio>
#include <cstdlib>
#include <list>
#include <string>

struct Peer {
    std::string endpoint;
    CTcpSocket socket;
};

// Removes the rows whose sockets are closed.
static void dropEnded(std::vector<TcpSocketStatus>& rows)
{
    for (size_t i = rows.size(); i > 0; --i) {
        if (!rows[i - 1].socket->isValid())
            rows.erase(rows.begin() + static_cast<long>(i - 1));
    }
}

int main(int argc, char* argv[])
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: manySockets HOST:PORT...\n");
        return 2;
    }
    std::list<Peer> peers; // sockets are not copied
    std::vector<TcpSocketStatus> rows;
    for (int i = 1; i < argc; ++i) {
        Peer& peer = peers.emplace_back();
        peer.endpoint = argv[i];
        const size_t colon = peer.endpoint.find(':');
        peer.socket.close(); // connect opens it again, non-blocking
        if (colon == std::string::npos ||
            peer.socket.connect(peer.endpoint.substr(0, colon), std::atoi(argv[i] + colon + 1), true) < 0) {
            std::printf("%s is not there\n", argv[i]);
            peer.socket.close();
            continue;
        }
        TcpSocketStatus row;
        row.socket = &peer.socket;
        row.context = &peer;
        rows.push_back(row);
    }

    //! [connects]
    // A connect that has ended makes its socket writable, whether it succeeded or failed.
    std::vector<TcpSocketStatus> connecting = rows;
    while (!connecting.empty() && CGqSocket::select(connecting, 3000) > 0) {
        for (size_t i = connecting.size(); i > 0; --i) {
            if (connecting[i - 1].writable == 0)
                continue;
            CTcpSocket& socket = *connecting[i - 1].socket;
            const bool there = socket.isWritable(0) == 1;
            std::printf("%s is %s\n", static_cast<Peer*>(connecting[i - 1].context)->endpoint.c_str(),
                        there ? "there" : "not there");
            if (!there)
                socket.close();
            connecting.erase(connecting.begin() + static_cast<long>(i - 1));
        }
    }
    //! [connects]
    for (const TcpSocketStatus& row : connecting) {
        std::printf("%s does not answer\n", static_cast<Peer*>(row.context)->endpoint.c_str());
        row.socket->close();
    }
    dropEnded(rows);

    //! [reads]
    // A connected socket is nearly always writable, which ends each wait at once: poll, and pause between two polls.
    for (int waited = 0; !rows.empty() && waited < 1000; waited += 5) {
        if (CGqSocket::select(rows, 0) < 0)
            break;
        for (TcpSocketStatus& row : rows) {
            if (row.readable == 0)
                continue;
            char data[256];
            const int size = row.socket->recv(data, sizeof data);
            if (size > 0)
                std::printf("%s says %s\n", static_cast<Peer*>(row.context)->endpoint.c_str(),
                            qPrintable(gqdb::CByte2Val::buf2str(data, size)));
            row.socket->close(); // this program needs only the first bytes
        }
        dropEnded(rows);
        gqdb::sleep(5);
    }
    //! [reads]
    return 0;
}
