#pragma once

#include "gqLibExport.h"

#include <string>
#include <vector>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor" // a virtual destructor would add slots to the vtables

// Network endpoints over the POSIX socket calls, IPv4 only. No call is repeated, not even after EINTR: each wait and
// each transfer is one blocking call. errno is left as the failed call set it.
//
// Only a failed allocation throws. It leaves no descriptor open that the object does not close, and outputs unchanged.
// If it happens while Qt prints a message to qDebug(), Qt can end the program.
//
// Times are in milliseconds, ports in host byte order. Addresses are dotted IPv4 text as inet_addr(3) accepts it; names
// are not resolved. Other text means 255.255.255.255: connecting fails (except for a CUdpClient that may send
// broadcasts), binding succeeds, but no client can connect. When binding, "" and exactly "127.0.0.1" mean every
// interface; use "127.1" to bind to loopback only.
//
// The descriptor of an object is 0 before it is first opened, and -1 after close() (0 in a CSocketCan). Operations that
// do not check this act on standard input while it is 0.
//
// One thread at a time may use an object. The destructors are not virtual: delete an object through its own type.

// Common base: descriptor, time-outs, kernel buffers. It does not open or close sockets itself.
class GQLIB_EXPORT CAbstractSocket {
public:
    CAbstractSocket();
    ~CAbstractSocket(); // does not close the descriptor
    CAbstractSocket(const CAbstractSocket&) = delete;
    CAbstractSocket& operator=(const CAbstractSocket&) = delete;

    // Set the time-out of blocking calls on this descriptor, SO_RCVTIMEO and SO_SNDTIMEO of socket(7). With 0, calls
    // wait indefinitely. A newly opened socket has no time-outs: set them again. Linux refuses a negative time unless
    // it is a whole number of seconds, which makes calls return immediately.
    //   1  requested, even if the system refused
    //   0  no socket, no effect
    // setRecvOverTm also prints the result of setsockopt(2) and the time to standard output.
    virtual int setRecvOverTm(int ms);
    virtual int setSendOverTm(int ms);

    // Closes the endpoint.
    virtual void close() = 0;

    // Returns true if the descriptor is 1 or more.
    bool isValid();

    // Makes the descriptor non-blocking. There is no way back. Returns 1, or 0 if fcntl(2) failed.
    int setAsyncMode();

    // Set the kernel buffer sizes in bytes, SO_RCVBUF and SO_SNDBUF. Return 1, even if the system refused, doubled or
    // limited the size; 0 if there is no socket.
    int setRecvBuf(int size);
    int setSendBuf(int size);

    // Return address and port of the peer, and of this end: 1, or 0 with both outputs unchanged.
    int getPeerName(std::string& peerAddress, int& peerPort);
    int getSockName(std::string& localAddress, int& localPort);

    // Waits up to `ms` until a read would not block; 0 polls.
    //    1  readable: data, the end of the stream, or a pending error
    //    0  time-out
    //   -1  select(2) failed, also with EINTR or because `ms` is negative
    // If the descriptor is -1, it waits for the full time and returns 1. If it is 0, it polls standard input.
    int isReadable(int ms);

protected:
    friend class CGqSocket;

    int* handle;         // points to the descriptor; owned
    bool opened;         // close() closes only if it is true, connect opens only if it is false; unused by CSocketCan
    std::string address; // first argument of CSocketCan::open; not used
    int port;            // second argument of CSocketCan::open; not used
};

// A descriptor that is passed to a new owner. It closes nothing.
struct SocketOwner {
    int descriptor;
};

// One TCP stream, outgoing or accepted.
class GQLIB_EXPORT CTcpSocket : public CAbstractSocket {
public:
    // Opens a socket.
    CTcpSocket();
    ~CTcpSocket(); // closes

    // Opens a socket with SO_REUSEADDR, an SO_LINGER time of 0, so that closing drops unsent data, and kernel buffers
    // of 921600 bytes in each direction. Nagle's algorithm stays on. Makes the process ignore SIGPIPE. If a socket was
    // open, its descriptor is lost. Returns 1, or 0 if there was no socket.
    int open();

    // Connects; opens a socket first if none is open. On failure the socket stays open. A blocking connect waits up to
    // the time set by setSendOverTm.
    //    1  connected, or was already connected
    //    0  in progress: wait with isWritable. A further connect meanwhile returns -1 if the socket is non-blocking; if
    //       it is blocking, it waits again and returns -1 only if that wait times out too
    //   -1  failed
    // `async` makes a socket that this call opens non-blocking. The socket of the constructor stays blocking: `async`
    // has an effect only after close().
    int connect(const std::string& peerAddress, int peerPort, bool async);

    // Takes over an open descriptor and sets SO_REUSEADDR and SO_LINGER on it. If a socket was open, its descriptor is
    // lost.
    void setSocket(SocketOwner owner);

    // Sets the local address and port before connecting. Returns 1, or 0 if bind(2) failed.
    int bind(const std::string& localAddress, int localPort);

    // Waits up to `ms` for the end of a connect in progress.
    //    1  connected, with room to send
    //    0  not connected, or urgent data is pending
    //   -1  time-out (0 in isReadable), select(2) failed, or the connect failed
    int isWritable(int ms);

    // Waits up to `ms` until the socket is readable, writable or has urgent data, and sets each output to 0 or 1.
    // Returns the number of outputs that are set, 0 on a time-out; or a negative value if select(2) failed (outputs
    // unchanged). With room to send it returns immediately: to wait for data, use isReadable. On a closed object it
    // waits for the full time, returns 0 and sets the outputs to 1, which is meaningless.
    int select(int ms, int& readable, int& writable, int& exceptional);

    // Receives with one recv(2). Waits up to the time set by setRecvOverTm, or indefinitely if none is set.
    //   > 0  number of bytes received, possibly fewer than `length`
    //     0  nothing yet: timed out, or the socket is non-blocking
    //    -1  the peer closed the connection, or the call failed, also with EINTR
    int recv(char* buffer, int length);

    // Sends with one send(2). The caller sends the rest of a partial write.
    //   > 0  number of bytes accepted, possibly fewer than `length`
    //     0  no room: timed out after the time set by setSendOverTm, or the socket is non-blocking; or `length` is 0
    //    -1  the call failed, also with EINTR
    int send(const char* buffer, int length);

    // Shuts the stream down and closes it. No effect if closed.
    void close() override;
};

// A listening TCP socket.
class GQLIB_EXPORT CTcpServer : public CAbstractSocket {
public:
    CTcpServer();
    ~CTcpServer(); // closes if listening

    // Opens a socket with SO_REUSEADDR, binds it and listens. Port 0 lets the system choose; getSockName returns the
    // port. Makes the process ignore SIGPIPE. If a socket was open, its descriptor is lost. Returns 1 or 0. If binding
    // or listening failed, the socket stays open, and close() does not close it unless the object was listening before.
    int open(const std::string& localAddress, int localPort, int backlog);

    // Waits up to the time set by setRecvOverTm, or indefinitely if none is set, and returns the next connection. The
    // caller owns it; deleting it closes the connection. Returns null after the time-out or if accept(2) failed, also
    // with EINTR.
    //
    // Each connection uses two descriptors: the socket that the constructor of CTcpSocket opens is never closed.
    CTcpSocket* accept();

    // No effect if not listening.
    void close() override;
};

// One row for CGqSocket::select.
struct TcpSocketStatus {
    CTcpSocket* socket = nullptr; // in: not null
    int readable = 0;             // out: 0 or 1
    int writable = 0;             // out: 0 or 1
    int exceptional = 0;          // out: 0 or 1, urgent data
    void* context = nullptr;      // for the caller; not used
};

// Waits for several TCP sockets. All operations are static.
class GQLIB_EXPORT CGqSocket {
public:
    // No effect; they need not be called.
    static void startup();
    static void cleanup();

    // Waits up to `ms` until any socket is readable, writable or has urgent data, and sets the outputs of all rows.
    // Returns the number of outputs that are set, 0 on a time-out; or a negative value if select(2) failed (rows
    // unchanged). With an empty list it waits for the full time. A socket with room to send ends the wait immediately,
    // as in CTcpSocket::select. The outputs of a closed socket are 1, which is meaningless, and are not counted.
    static int select(std::vector<TcpSocketStatus>& sockets, int ms);
};

// A datagram endpoint bound to a port. It stores no sender: pass the peer to each sendto.
//
// Each open operation creates a new socket; if one was open, its descriptor is lost. If opening fails, the socket is
// closed, except when only bind(2) failed (result 0): then it stays open until close(). Set time-outs after opening.
//
// If opening fails after the socket was created, the socket is closed but its number is kept: isValid() is true, and
// later calls act on whatever file gets that number. If the object was open before, close() and the destructor do so
// too. Therefore close() an open object before opening it again, and after a failure only open it again.
class GQLIB_EXPORT CUdpServer : public CAbstractSocket {
public:
    CUdpServer();  // no socket yet
    ~CUdpServer(); // closes

    // Opens for unicast, with SO_REUSEADDR. Returns 1 bound; 0 not bound; -1 no socket; -2 SO_REUSEADDR refused.
    int openP2P(const std::string& localAddress, int localPort);

    // Returns -3 on Linux, which refuses SO_BROADCAST as the one byte that is passed here. To receive broadcasts, use
    // openP2P: only sending needs the option, and CUdpClient::openBroadcast sets it.
    //   1 bound; 0 not bound; -1 no socket; -2 SO_REUSEADDR refused; -3 SO_BROADCAST refused
    int openBroadcast(const std::string& localAddress, int localPort);

    // Joins a group on the interface with the given address, or on one that the system chooses if it is empty. The
    // socket is bound to every interface, so that it also receives other datagrams sent to the port.
    //   1 joined; -1 `group` is empty; -2 no socket; -3 SO_REUSEADDR refused; -4 not bound; -5 not joined
    int openMulticast(const std::string& group, int localPort, const std::string& interfaceAddress);

    // Binds an open socket. Returns 1, or 0 if bind(2) failed.
    int bind(const std::string& localAddress, int localPort);

    // Sends one datagram with one sendto(2). Returns its size, or -1, also if there is no room.
    int sendto(const char* buffer, int length, const std::string& peerAddress, int peerPort);

    // Receives one datagram with one recvfrom(2); bytes beyond `length` are lost. Waits like CTcpSocket::recv.
    //   > 0  number of bytes received
    //     0  an empty datagram; or nothing yet: timed out, or the socket is non-blocking
    //    -1  the call failed
    // The second form also returns the sender; if no datagram was received, these outputs are unchanged.
    int recvfrom(char* buffer, int length);
    int recvfrom(char* buffer, int length, std::string& peerAddress, int& peerPort);

    // As documented for CTcpSocket, but isWritable never returns 1, because a server has no peer.
    int isWritable(int ms);
    int select(int ms, int& readable, int& writable, int& exceptional);

    // Leaves the group and closes. No effect if closed.
    void close() override;

protected:
    std::string multicastGroup;     // of the last successful openMulticast
    std::string multicastInterface; // of the last successful openMulticast
    bool multicastJoined;           // never cleared: every later close() leaves the group again, without effect
};

// A datagram endpoint for a client, which sends to the peer set by connect, or to any with sendto. What CUdpServer
// documents about opening holds here too, with other result codes.
class GQLIB_EXPORT CUdpClient : public CAbstractSocket {
public:
    CUdpClient();  // no socket yet
    ~CUdpClient(); // closes

    // Opens for unicast, with no options. Returns 1; -1 no socket.
    int openP2P();

    // Opens for sending to broadcast addresses. Returns 1; -1 no socket; -2 SO_BROADCAST refused.
    int openBroadcast();

    // Opens for sending to multicast groups through the interface with the given address, or one that the system
    // chooses if it is empty. Members on this machine do not receive these datagrams. The hop limit is the system's
    // default, 1, so that they stay in the local network.
    //   1; -1 no socket; -2 IP_MULTICAST_IF refused; -3 IP_MULTICAST_LOOP refused; the last two print to qDebug()
    int openMulticast(const std::string& interfaceAddress);

    // Binds an open socket. Returns 1, or 0 if bind(2) failed.
    int bind(const std::string& localAddress, int localPort);

    // Sets the peer; calls openP2P first if no socket is open. Sends nothing: success does not mean that the peer
    // exists. `async` makes the socket non-blocking, also one that was open. Returns 1, or -1 if connect(2) failed.
    int connect(const std::string& peerAddress, int peerPort, bool async);

    // As documented for CUdpServer.
    int sendto(const char* buffer, int length, const std::string& peerAddress, int peerPort);
    int recvfrom(char* buffer, int length);
    int recvfrom(char* buffer, int length, std::string& peerAddress, int& peerPort);

    // Receive from and send to the peer, one datagram each, with the results of CTcpSocket. Receiving an empty datagram
    // gives -1. If the port of the peer is not open, a call after a send fails: -1, ECONNREFUSED.
    int recv(char* buffer, int length);
    int send(const char* buffer, int length);

    // As documented for CTcpSocket; isWritable returns 1 only after a successful connect.
    int isWritable(int ms);
    int select(int ms, int& readable, int& writable, int& exceptional);

    // No effect if closed. A later connect opens a new socket by openP2P.
    void close() override;
};

// Data bytes of classic CAN frames on one SocketCAN interface; see SocketCAN in the kernel's documentation. Receives
// all frames of the interface except those sent by the object itself.
//
// There are no time-outs: recv waits indefinitely unless the socket is non-blocking. Wait with isReadable instead.
// After close() the descriptor is 0, so that isReadable then polls standard input. open and setRecvOverTm print to
// standard output by printf(3), unaffected by std::cout.
class GQLIB_EXPORT CSocketCan : public CAbstractSocket {
public:
    CSocketCan();
    ~CSocketCan(); // does not close: call close() first

    // Set at a protocol level that does not support them, so without effect. Return 1, or 0 if there is no socket.
    int setRecvOverTm(int ms) override;
    int setSendOverTm(int ms) override;

    // Opens a socket and binds it to an interface by name, for example "can0". `ifaceArg` and `reservedArg` have no
    // effect. If a socket was open, its descriptor is lost.
    //    1  bound
    //   -1  no socket, no such interface, or not bound; the socket was closed
    //   -2  bound and open, but still blocking
    // Prints the interface index or what failed; the message for an unknown interface always says can0.
    int open(const std::string& ifaceName, int ifaceArg, int reservedArg, bool nonBlocking);

    // Receives one frame with one read(2). Returns its number of data bytes, 0 to 8; also 0 if nothing was received or
    // the read failed. `buffer` must have room for 8 bytes, whatever `length` is. The identifier is not returned.
    int recv(char* buffer, int length);

    // Sends one frame of up to 8 data bytes with one write(2). `canId` includes the flag bits (CAN_EFF_FLAG and so on)
    // as in struct can_frame. Returns 16, the size of that structure, or -1.
    int send(const char* buffer, int length, int canId);

    // No effect if closed.
    void close() override;
};

#pragma GCC diagnostic pop
