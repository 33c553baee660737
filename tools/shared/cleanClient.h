#pragma once

#include <gqSocketUnix.h>
#include <tcpApi.h>
#include <udpApi.h>

// A frame client that can leave its connection without a trace: what remains of a partial frame would be taken for the
// beginning of the next reply.
template <class Client>
class CleanClient : public Client {
protected:
    void dropConnection()
    {
        Client::close();
        Client::recvFrame.clear();
        Client::recvFrameSize = 0;
    }
};

class CleanTcpClient : public CleanClient<gqdb::CTcpAPI> {
protected:
    // Replaces the socket by a new one with the same time limits. The next request connects it.
    void reopen()
    {
        dropConnection();
        socket->open();
        setRecvOverTm(recvOverTm);
        setSendOverTm(sendOverTm);
    }
};

using CleanUdpClient = CleanClient<gqdb::CUdpAPI>;
