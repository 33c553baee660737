#pragma once

#include "gqLibExport.h"

// One serial line of this machine, /dev/ttyS0, /dev/ttyS1 and so on, without line editing, echo and signals. Pass a
// flowControl of 0 for binary data: otherwise XON/XOFF and the translation of line ends stay as the line was set, and
// can change bytes. send and recv do not wait; close can wait up to 30 s (the driver's default) for unsent bytes.
// termios(3) documents the flags. One thread at a time may use an object.
//
// If the device can be opened but is not a terminal, for example because the port does not exist, open() returns 0 and
// isOpen() is false, but the descriptor stays open. A further open() then returns 1 without effect, and the destructor
// does not close the descriptor: call close().
class GQLIB_EXPORT CSerial {
public:
    CSerial();
    ~CSerial(); // closes if open
    CSerial(const CSerial&) = delete;
    CSerial& operator=(const CSerial&) = delete;

    // Returns true after a successful open() until close().
    bool isOpen();

    // Opens /dev/ttyS<portNumber> and sets its parameters; errors of setting them are not reported. Returns 1, or 0 if
    // it could not be opened or is not a terminal. If a descriptor is open, returns 1 without effect. Prints to
    // qDebug(), where Qt can end the program if memory is exhausted.
    int open(int portNumber, int baud, int dataBits, int stopBits, int parity, int flowControl);

    // Sets the parameters of an open line and discards queued bytes in both directions. Returns 1, or 0 if there is no
    // descriptor.
    //   baud         1200, 2400, 4800, 9600, 19200, 38400, 115200; any other value means 9600
    //   dataBits     5, 6, 7; any other value means 8
    //   stopBits     2; any other value means 1
    //   parity       1 odd, 2 even; any other value means none, and clears INPCK
    //   flowControl  0 clears XON/XOFF and the translation of line ends (BRKINT, INPCK, ISTRIP, IGNCR, ICRNL, IXON,
    //                IXANY, IXOFF, ONLCR, OCRNL); any other value leaves them as they are and enables nothing
    // RTS/CTS, OPOST, INLCR, IGNBRK, IGNPAR and PARMRK are not changed.
    int setPara(int baud, int dataBits, int stopBits, int parity, int flowControl);

    // Return the result of one write(2) or read(2), or -1 if not open. With no room, or nothing to read, they return -1
    // immediately with EAGAIN in errno: check errno to distinguish this from a broken line. To wait, try again after a
    // pause.
    int send(const char* buffer, int length);
    int recv(char* buffer, int length);

    // No effect if there is no descriptor.
    void close();

protected:
    bool opened;
    int* handle; // points to the descriptor, -1 if there is none; owned
};
