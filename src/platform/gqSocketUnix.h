#pragma once

#include "gqLibExport.h"

#include <string>
#include <vector>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor" // a virtual destructor would add slots to the vtables

// Network endpoints, thin over the POSIX socket calls: no loop, no retry on EINTR, IPv4 only; each connect, send, recv,
// accept and wait is one system call. Nothing is thrown but by a failed allocation. errno is left as the call set it.
//
// Times are milliseconds in an int, ports are in host byte order, addresses are dotted IPv4 text as inet_addr(3) takes
// it, with no name look-up. Text that is no address counts as 255.255.255.255: connecting to it fails (but for a
// CUdpClient that may send broadcasts), while Linux binds and listens there, and no client arrives. Where an address is
// bound, "" and exactly "127.0.0.1" both mean every interface; to listen on loopback alone, say "127.1".
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

    // Gives the descriptor back to the system, in the manner of each endpoint.
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
    std::string address; // the interface given to CSocketCan::open; read by nothing
    int port;            // its second argument, likewise
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
    // included.
    //
    // A connection costs two descriptors, one of which never comes back: that of the socket which a new CTcpSocket
    // makes for itself stays open for the life of the process.
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

// Waits for many TCP sockets at once. Everything is static.
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

// A datagram endpoint bound to a port, which answers whoever writes to it. It remembers no sender.
//
// Each way of opening makes a new socket; one that was open stays open with no one to close it. Where opening fails,
// the socket is closed, but for a failed bind (0): then close() ends it. The negative codes are those of each
// operation. Time-outs belong to the socket: set them behind opening.
//
// Where a socket was made and then closed by a failed opening, its number stays: isValid() is true, and calls go to
// whatever file gets that number next; of an object that was open before, so does close(), and the destructor. close()
// an open object before you open it anew, and after a failure do nothing but open again.
class GQLIB_EXPORT CUdpServer : public CAbstractSocket {
public:
    CUdpServer();  // no socket yet
    ~CUdpServer(); // closes

    // Plain unicast, with SO_REUSEADDR. 1 bound; 0 not bound; -1 no socket; -2 option refused.
    int openP2P(const std::string& localAddress, int localPort);

    // Ends in -3 on Linux, which refuses SO_BROADCAST in the one byte that is passed here. To receive broadcasts, use
    // openP2P: the option is needed for sending alone, and CUdpClient::openBroadcast has it.
    //   1 bound; 0 not bound; -1 no socket; -2 SO_REUSEADDR refused; -3 SO_BROADCAST refused
    int openBroadcast(const std::string& localAddress, int localPort);

    // Joins a group, on the interface with that address, or on the system's choice if it is empty. Bound to every
    // interface, and hence receives what else comes to the port.
    //   1 joined; -1 no group given; -2 no socket; -3 option refused; -4 not bound; -5 not joined
    int openMulticast(const std::string& group, int localPort, const std::string& interfaceAddress);

    // Fixes the local end of an open socket. 1, or 0 if bind(2) failed.
    int bind(const std::string& localAddress, int localPort);

    // One sendto(2), one datagram. Its bytes, or -1, also where there is no room.
    int sendto(const char* buffer, int length, const std::string& peerAddress, int peerPort);

    // One recvfrom(2), one datagram; what is longer than `length` is lost. Waits as CTcpSocket::recv does.
    //   > 0  bytes read
    //     0  an empty datagram; or nothing yet
    //    -1  failed
    // The second form also gives the sender, and leaves the outputs where no datagram came.
    int recvfrom(char* buffer, int length);
    int recvfrom(char* buffer, int length, std::string& peerAddress, int& peerPort);

    // As for CTcpSocket. isWritable never gives 1, for a server has no peer.
    int isWritable(int ms);
    int select(int ms, int& readable, int& writable, int& exceptional);

    // Leaves the group and closes; harmless when closed.
    void close() override;

protected:
    std::string multicastGroup;     // of the last openMulticast that succeeded
    std::string multicastInterface; // likewise, empty for the system's choice
    bool multicastJoined;           // never cleared: a later close leaves the group again, in vain
};

// A datagram endpoint that sends, mostly to the one peer that connect fixes. Opening as for CUdpServer, with codes of
// its own.
class GQLIB_EXPORT CUdpClient : public CAbstractSocket {
public:
    CUdpClient();  // no socket yet
    ~CUdpClient(); // closes

    // Plain unicast, with no option set. 1; -1 no socket.
    int openP2P();

    // May send to broadcast addresses. 1; -1 no socket; -2 SO_BROADCAST refused.
    int openBroadcast();

    // May send to groups, out of the interface with that address, or of the system's choice if it is empty. What it
    // sends does not come back to this machine. Joins nothing. The hop limit is the system's, 1: one network.
    //   1; -1 no socket; -2 IP_MULTICAST_IF refused; -3 IP_MULTICAST_LOOP refused; the last two with a line to qDebug()
    int openMulticast(const std::string& interfaceAddress);

    // Fixes the local end of an open socket. 1, or 0 if bind(2) failed.
    int bind(const std::string& localAddress, int localPort);

    // Fixes the peer, after openP2P if nothing is open; nothing is sent, so that it tells nothing about the peer.
    // `async` makes the socket non-blocking, each time. 1, or -1 if connect(2) failed.
    int connect(const std::string& peerAddress, int peerPort, bool async);

    // As for CUdpServer.
    int sendto(const char* buffer, int length, const std::string& peerAddress, int peerPort);
    int recvfrom(char* buffer, int length);
    int recvfrom(char* buffer, int length, std::string& peerAddress, int& peerPort);

    // One datagram from and to the peer, with the results of CTcpSocket. An empty datagram gives -1 here. A peer whose
    // port is not open makes a later call fail: -1, ECONNREFUSED.
    int recv(char* buffer, int length);
    int send(const char* buffer, int length);

    // As for CTcpSocket; isWritable gives 1 behind a successful connect alone.
    int isWritable(int ms);
    int select(int ms, int& readable, int& writable, int& exceptional);

    // Harmless when closed. A connect behind it opens anew, without the options of the last opening.
    void close() override;
};

// Classic CAN frames on one interface of SocketCAN, see can(7) of the kernel's documentation: their data bytes alone.
// All frames of the interface are received, but those that the object sent itself.
//
// There is no time-out: recv waits for ever, unless the socket is non-blocking. Ask isReadable first; it has one. A
// descriptor of 0 means never opened or closed here. open and the time-outs say what they did on standard output.
class GQLIB_EXPORT CSocketCan : public CAbstractSocket {
public:
    CSocketCan();
    ~CSocketCan(); // does not close: call close() first

    // Asked for at a level that knows them not: no effect. 1; or 0 with no socket. setRecvOverTm prints a line.
    int setRecvOverTm(int ms) override;
    int setSendOverTm(int ms) override;

    // Binds to an interface by its name, say "can0". The two middle arguments are kept for programs that pass them, and
    // change nothing. On an open object the old socket stays open with no one to close it.
    //   1; -1 no socket, no such interface, or not bound, with the socket closed; -2 it stays blocking, and open
    // Prints the index, or what failed; every failed look-up calls the interface can0.
    int open(const std::string& ifaceName, int ifaceArg, int reservedArg, bool nonBlocking);

    // One read(2), one frame. Its number of data bytes, 0 to 8; 0 also where nothing came or the read failed. `buffer`
    // has room for 8 bytes, whatever `length` says. The identifier is not told.
    int recv(char* buffer, int length);

    // One write(2), one frame of up to 8 data bytes. `canId` with its flag bits (CAN_EFF_FLAG and the like), as in
    // struct can_frame. 16, the size of that structure, not `length`; or -1.
    int send(const char* buffer, int length, int canId);

    // Harmless when not open.
    void close() override;
};

#pragma GCC diagnostic pop
