#include "gqSerialUnix.h"

#include <QDebug>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <cstdio>

CSerial::CSerial() : opened(false), handle(new int(-1)) {}

CSerial::~CSerial()
{
    if (isOpen())
        close();
    delete handle;
    handle = nullptr;
}

bool CSerial::isOpen()
{
    return opened;
}

int CSerial::open(int portNumber, int baud, int dataBits, int stopBits, int parity, int flowControl)
{
    if (*handle >= 0)
        return 1;
    char device[32];
    std::snprintf(device, sizeof device, "/dev/ttyS%d", portNumber);
    qDebug() << "openComm:" << device;
    *handle = ::open(device, O_RDWR | O_NOCTTY | O_NONBLOCK);
    if (*handle < 0)
        return 0;
    const int terminal = isatty(*handle);
    if (terminal != 1) {
        qDebug() << "isatty:" << terminal;
        return 0; // with the descriptor open, deliberately
    }
    setPara(baud, dataBits, stopBits, parity, flowControl);
    opened = true;
    qDebug() << "openComm success";
    return 1;
}

// --- Parameters ---------------------------------------------------------------------------------------------------

static speed_t speedOf(int baud)
{
    switch (baud) {
    case 1200:
        return B1200;
    case 2400:
        return B2400;
    case 4800:
        return B4800;
    case 19200:
        return B19200;
    case 38400:
        return B38400;
    case 115200:
        return B115200;
    default:
        return B9600; // any other value
    }
}

static tcflag_t sizeOf(int dataBits)
{
    switch (dataBits) {
    case 5:
        return CS5;
    case 6:
        return CS6;
    case 7:
        return CS7;
    default:
        return CS8;
    }
}

static void setParity(termios& line, int parity)
{
    switch (parity) {
    case 1:
        line.c_cflag |= PARENB | PARODD;
        break;
    case 2:
        line.c_cflag |= PARENB;
        line.c_cflag &= ~tcflag_t(PARODD);
        break;
    default:
        line.c_cflag &= ~tcflag_t(PARENB);
        line.c_iflag &= ~tcflag_t(INPCK);
        break;
    }
}

int CSerial::setPara(int baud, int dataBits, int stopBits, int parity, int flowControl)
{
    if (*handle < 0)
        return 0;
    termios line = {};
    tcgetattr(*handle, &line);
    cfsetispeed(&line, speedOf(baud));
    cfsetospeed(&line, speedOf(baud));
    line.c_cflag &= ~tcflag_t(CSIZE);
    line.c_cflag |= CREAD | CLOCAL | sizeOf(dataBits);
    if (stopBits == 2)
        line.c_cflag |= CSTOPB;
    else
        line.c_cflag &= ~tcflag_t(CSTOPB);
    setParity(line, parity);
    if (flowControl == 0) {
        line.c_iflag &= ~tcflag_t(BRKINT | INPCK | ISTRIP | IGNCR | ICRNL | IXON | IXANY | IXOFF);
        line.c_oflag &= ~tcflag_t(ONLCR | OCRNL);
    }
    line.c_cc[VTIME] = 150; // tenths of a second; without effect, as the descriptor does not block
    line.c_cc[VMIN] = 0;
    line.c_lflag = 0;
    tcflush(*handle, TCIOFLUSH);
    tcsetattr(*handle, TCSANOW, &line);
    return 1;
}

// --- Bytes --------------------------------------------------------------------------------------------------------

int CSerial::send(const char* buffer, int length)
{
    if (!opened)
        return -1;
    return static_cast<int>(::write(*handle, buffer, static_cast<size_t>(length)));
}

int CSerial::recv(char* buffer, int length)
{
    if (!opened)
        return -1;
    return static_cast<int>(::read(*handle, buffer, static_cast<size_t>(length)));
}

void CSerial::close()
{
    if (*handle < 0)
        return;
    ::close(*handle);
    *handle = -1;
    opened = false;
}
