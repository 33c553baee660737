// Reads holding registers of a field device by Modbus RTU over a serial line.
//   modbusPoll LINE UNIT REGISTER COUNT     modbusPoll 1 17 107 3 reads from unit 17 on /dev/ttyS1

#include <gqLib/byte2Val.h>
#include <gqLib/gqLibUnix.h>
#include <gqLib/gqSerialUnix.h>

#include <cstdio>
#include <cstdlib>

using gqdb::CByte2Val;

// Modbus sends values high byte first, and its CRC low byte first.
static void appendBigEndian(int value, QByteArray& data)
{
    data.append(static_cast<char>(value >> 8));
    data.append(static_cast<char>(value));
}

static void appendCrc(QByteArray& telegram)
{
    unsigned char first = 0;
    unsigned char second = 0;
    CByte2Val::getCrc16(telegram.constData(), telegram.size(), first, second);
    telegram.append(static_cast<char>(second));
    telegram.append(static_cast<char>(first));
}

// The line does not block: reads until `size` bytes have arrived or a second has passed.
static QByteArray receive(CSerial& line, int size)
{
    QByteArray bytes;
    for (int waited = 0; bytes.size() < size && waited < 1000; waited += 5) {
        char part[256];
        const int count = line.recv(part, size - bytes.size());
        if (count > 0)
            bytes.append(part, count);
        else
            gqdb::sleep(5);
    }
    return bytes;
}

int main(int argc, char* argv[])
{
    if (argc != 5) {
        std::fprintf(stderr, "usage: modbusPoll LINE UNIT REGISTER COUNT\n");
        return 2;
    }
    const int unit = std::atoi(argv[2]);
    const int count = std::atoi(argv[4]);
    if (count < 1 || count > 125) {
        std::fprintf(stderr, "1 to 125 registers\n");
        return 2;
    }
    CSerial line;
    // 9600 baud, 8 data bits, 1 stop bit, even parity (2, the Modbus default), no flow control
    if (line.open(std::atoi(argv[1]), 9600, 8, 1, 2, 0) != 1) {
        std::fprintf(stderr, "modbusPoll: cannot open line %s\n", argv[1]);
        return 1;
    }

    QByteArray request;
    request.append(static_cast<char>(unit));
    request.append('\x03'); // read holding registers
    appendBigEndian(std::atoi(argv[3]), request);
    appendBigEndian(count, request);
    appendCrc(request);
    if (line.send(request.constData(), request.size()) != request.size()) {
        std::fprintf(stderr, "modbusPoll: cannot send\n");
        return 1;
    }

    // Unit, function, number of bytes, the registers, CRC.
    const QByteArray reply = receive(line, 5 + 2 * count);
    QByteArray checked = reply.left(reply.size() - 2);
    appendCrc(checked);
    if (reply.size() != 5 + 2 * count || !CByte2Val::isGramEqual(reply, checked) ||
        !reply.startsWith(request.left(2))) {
        std::fprintf(stderr, "no good reply: %s\n", qPrintable(CByte2Val::buf2str(reply)));
        return 1;
    }
    for (int i = 0; i < count; ++i) {
        const auto high = static_cast<unsigned char>(reply.at(3 + 2 * i));
        const auto low = static_cast<unsigned char>(reply.at(4 + 2 * i));
        std::printf("%d: %d\n", std::atoi(argv[3]) + i, high << 8 | low);
    }
    return 0;
}
