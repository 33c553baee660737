#pragma once

#include "gqLibExport.h"

// One serial line of this machine, by number: /dev/ttyS0 and on. No line editing, no echo, no signals. Pass a
// flowControl of 0 for binary telegrams: with any other, XON/XOFF and the translation of line ends stay as the line had
// them, and bytes change on the way. It never blocks: see recv and send, and termios(3) for the flags. One object
// belongs to one thread at a time.
//
// A device that can be opened but is no terminal, such as a number without a port behind it, leaves an object in
// between: open() gave 0 and isOpen() is false, yet the descriptor is held. open() then answers 1 and does nothing, and
// the destructor leaves the descriptor open: call close().
class GQLIB_EXPORT CSerial {
public:
    CSerial();
    ~CSerial(); // closes if open
    CSerial(const CSerial&) = delete;
    CSerial& operator=(const CSerial&) = delete;

    // From an open() that gave 1 to close().
    bool isOpen();

    // Opens /dev/ttyS<portNumber> and sets its parameters, of which no failure is told. 1; or 0 if it could not be
    // opened or is no terminal. On an open line 1, with nothing changed. Says what it does through qDebug().
    int open(int portNumber, int baud, int dataBits, int stopBits, int parity, int flowControl);

    // Sets the parameters of an open line, and drops what is queued in both directions. 1, or 0 with no descriptor.
    //   baud         1200, 2400, 4800, 9600, 19200, 38400, 115200; any other runs at 9600
    //   dataBits     5, 6, 7; any other is 8
    //   stopBits     2; any other is 1
    //   parity       1 odd, 2 even; any other is none
    //   flowControl  0 clears XON/XOFF and the translation of line ends (BRKINT, INPCK, ISTRIP, IGNCR, ICRNL, IXON,
    //                IXANY, IXOFF, ONLCR, OCRNL); any other leaves them as they are, and switches nothing on
    // RTS/CTS, OPOST, INLCR, IGNBRK, IGNPAR and PARMRK stay as they are.
    int setPara(int baud, int dataBits, int stopBits, int parity, int flowControl);

    // One write(2), one read(2): their result, untouched. -1 if not open. They do not wait: with no room or nothing to
    // read they give -1 at once, with EAGAIN in errno, so that the number alone does not tell silence from a dead line.
    // To wait, poll(2) is of no help without the descriptor: try again after a pause.
    int send(const char* buffer, int length);
    int recv(char* buffer, int length);

    // Harmless when closed.
    void close();

protected:
    bool opened;
    int* handle; // the descriptor's cell, owned: -1 none; 0 is a descriptor like any other
};
