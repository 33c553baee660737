#pragma once

#include "gqLibExport.h"

#include <string>
#include <vector>

// Network endpoints, thin over the POSIX socket calls: no loop, no retry on EINTR, IPv4 only; each connect, send, recv,
// accept and wait is one system call. Nothing is thrown but by a failed allocation. errno is left as the call set it.
//
// Times are milliseconds in an int, ports are in host byte order, addresses are dotted IPv4 text as inet_addr(3) takes
// it, with no name look-up. Text that is no address counts as 255.255.255.255: connecting to it fails, but Linux binds
// and listens there, and no client arrives. Where an address is bound, "" and exactly "127.0.0.1" both mean every interface; to
// listen on loopback alone, say "127.1".
//
// Objects are independent of each other; one object belongs to one thread at a time. They are destroyed through their
// own type, for the destructors are not virtual.

// Common base: storage of the descriptor, time-outs, kernel buffers. It neither makes nor closes a socket.
class GQLIB_EXPORT CAbstractSocket {
public:
    CAbstractSocket();
    ~CAbstractSocket(); // does not close the descriptor
    CAbstractSocket(const CAbstractSocket&) = delete;
    CAbstractSocket& operator=(const CAbstractSocket&) = delete;

    // Time-out of the blocking calls on this descriptor, SO_RCVTIMEO and SO_SNDTIMEO of socket(7). 0 means none: a call
    // then waits without limit. It ends with the descriptor: set it again on a socket that was opened anew. Linux
    // refuses a negative time with a fraction of a second and takes a whole negative second as "return at once".
    //   1  asked for, even if the system refused
    //   0  no socket, nothing asked
    // setRecvOverTm alone prints the system's answer and the time to standard output.
    virtual int setRecvOverTm(int ms);
    virtual int setSendOverTm(int ms);

    virtual void close() = 0;

    // Whether the descriptor is 1 or more. 0 means never opened, -1 closed.
    bool isValid();

    // Makes the descriptor non-blocking, for good. 1, or 0 if fcntl(2) failed.
    int setAsyncMode();

    // Kernel buffer sizes in bytes, SO_RCVBUF and SO_SNDBUF. 1 even if the system refused, doubled or clipped; 0 with
    // no socket.
    int setRecvBuf(int size);
    int setSendBuf(int size);

    // Address and port of the other and of this end. 1; or 0 with both outputs untouched.
    int getPeerName(std::string& peerAddress, int& peerPort);
    int getSockName(std::string& localAddress, int& localPort);

    // Waits up to `ms` until a read would not block; 0 polls.
    //    1  readable: data, an end of the stream, or an error to collect
    //    0  not in time
    //   -1  select(2) failed, EINTR and a negative `ms` included
    // A closed object waits out the whole time and then gives 1; a never opened one watches standard input.
    int isReadable(int ms);

protected:
    friend class CGqSocket; // watches the descriptors of many sockets

    int* handle;         // the descriptor's cell, owned: 0 never opened, -1 closed
    bool opened;         // whether close() has something to close; connect goes by it
    std::string address; // reserved for interface names
    int port;            // reserved, like address
};

// A descriptor on its way to a new owner. Closes nothing by itself.
struct SocketOwner {
    int descriptor;
};

// One TCP stream, outgoing or accepted.
class GQLIB_EXPORT CTcpSocket : public CAbstractSocket {
public:
    // Opens a socket at once.
    CTcpSocket();
    ~CTcpSocket(); // closes

    // Makes a socket with these options: SO_REUSEADDR; SO_LINGER of 0, so that closing drops what is unsent; kernel
    // buffers of 921600 bytes in each direction. Nagle's algorithm stays on. Sets SIGPIPE to be ignored, for the whole
    // process. On an open object the old socket stays open with no one to close it. 1, or 0 if there was no socket.
    int open();

    // Connects, after opening a socket if none is open; a failure closes nothing. A blocking connect waits at most the
    // time given to setSendOverTm.
    //    1  connected, also when it was connected already
    //    0  in progress; isWritable tells when it has ended, and a further connect before that gives -1
    //   -1  failed
    // `async` makes a socket non-blocking that is opened in here. A new object is open, so that its first connect
    // blocks whatever `async` says; after close() it counts.
    int connect(const std::string& peerAddress, int peerPort, bool async);

    // Becomes the owner of an open descriptor; the one held before is not closed. Sets SO_REUSEADDR and SO_LINGER.
    void setSocket(SocketOwner owner);

    // Fixes the local end before connecting. 1, or 0 if bind(2) failed.
    int bind(const std::string& localAddress, int localPort);

    // Whether a connect has ended well, waiting up to `ms` for it.
    //    1  connected
    //    0  not connected
    //   -1  not in time, select(2) failed, or the connect failed. A time-out is 0 in isReadable
    int isWritable(int ms);

    // What can be done now: waits up to `ms` until the socket is readable, writable or has urgent data, and sets each
    // output to 0 or 1. Result: how many are set, 0 on a time-out; negative if select(2) failed, outputs untouched. A
    // connected socket with room to send ends the wait at once; to wait for data alone, use isReadable. A closed object
    // waits out the time; the result is 0 and the outputs are 1, which says nothing.
    int select(int ms, int& readable, int& writable, int& exceptional);

    // One recv(2). Waits at most the time given to setRecvOverTm, for ever if none was given.
    //   > 0  bytes read, maybe fewer than `length`
    //     0  nothing yet: the time has passed, or the socket does not block
    //    -1  the peer closed, or the call failed, EINTR included
    int recv(char* buffer, int length);

    // One send(2). Nothing sends the rest of a partial write.
    //   > 0  bytes taken, maybe fewer than `length`
    //     0  no room: the time given to setSendOverTm has passed, or the socket does not block
    //    -1  failed, EINTR included
    int send(const char* buffer, int length);

    // Shuts the stream down and closes it; harmless when closed already.
    void close() override;
};

// A listening TCP socket.
class GQLIB_EXPORT CTcpServer : public CAbstractSocket {
public:
    CTcpServer();
    ~CTcpServer(); // closes if listening

    // Makes a socket, binds and listens; port 0 lets the system choose (getSockName tells). Sets SIGPIPE to be ignored,
    // for the whole process. 1; or 0, and then a socket that could not bind or listen stays open with no one to close
    // it.
    int open(const std::string& localAddress, int localPort, int backlog);

    // The next connection, waiting at most the time given to setRecvOverTm, for ever if none was given; the caller owns
    // the result and deletes it, which closes the connection. Null when the time has passed or accept(2) failed, EINTR
    // included. Each accepted connection leaves one further descriptor open for the
    // life of the process, that of the socket which a new CTcpSocket makes for itself: a service that accepts many
    // connections plans for two descriptors each, one of which never comes back.
    CTcpSocket* accept();

    // Harmless when not listening.
    void close() override;
};

// One row for CGqSocket::select.
struct TcpSocketStatus {
    CTcpSocket* socket = nullptr; // in: not null
    int readable = 0;             // out: 0 or 1
    int writable = 0;             // out
    int exceptional = 0;          // out
    void* context = nullptr;      // the caller's own; never looked at
};

class GQLIB_EXPORT CGqSocket {
public:
    // Do nothing; they need not be called.
    static void startup();
    static void cleanup();

    // Waits up to `ms` until any socket can do something, and writes the three outputs of every row. Result: how many
    // outputs are set in all, 0 on a time-out; negative if select(2) failed, rows untouched. An empty list is a sleep.
    // As in CTcpSocket::select, a socket with room to send ends the wait at once. A closed socket in the list is no
    // error; its outputs are 1, say nothing and are not counted.
    static int select(std::vector<TcpSocketStatus>& sockets, int ms);
};
