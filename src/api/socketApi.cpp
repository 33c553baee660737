#include "socketApi.h"

#include "byteOrder.h"
#include "listCount.h"

namespace gqdb {

CSocketAPI::CSocketAPI()
    : serverPort(0), connected(false), recvBuffer(nullptr), recvFrameSize(0), sendSeq(0), reserved1(0),
      recvOverTm(9000), sendOverTm(9000), reserved2(0), reserved3(0)
{
}

CSocketAPI::~CSocketAPI()
{
    delete[] recvBuffer;
    recvBuffer = nullptr;
}

int CSocketAPI::setRecvOverTm(int ms)
{
    recvOverTm = ms;
    return 1;
}

int CSocketAPI::setSendOverTm(int ms)
{
    sendOverTm = ms;
    return 1;
}

bool CSocketAPI::isConnected()
{
    return connected;
}

// --- Building a frame ---------------------------------------------------------------------------------------------

void CSocketAPI::addHeader(unsigned char command, unsigned char arg1, unsigned char arg2, QByteArray& data)
{
    addHeader(command, arg1, arg2, sendSeq, 0, data);
    sendSeq = static_cast<int>((static_cast<unsigned int>(sendSeq) + 1) & 0xFFFF);
}

void CSocketAPI::addHeader(unsigned char command, unsigned char arg1, unsigned char arg2, int seq, int,
                           QByteArray& data)
{
    char header[headerSize] = {frameStart}; // the length stays 0 until addEnd
    store16(static_cast<unsigned int>(seq), header + 5);
    header[7] = static_cast<char>(arg2); // arg2 precedes arg1
    header[8] = static_cast<char>(arg1);
    header[9] = static_cast<char>(command);
    data.append(header, headerSize);
}

int CSocketAPI::addEnd(QByteArray& data)
{
    const int size = data.size();
    if (size < 4)
        return 0;
    if (size == 4)
        data.resize(5); // the length field ends at the fifth byte
    store32(static_cast<unsigned int>(size - headerSize), data.data() + 1);
    const char tail[3] = {0, 0, frameEnd};
    data.append(tail, sizeof tail);
    return 1;
}

// --- Payloads -----------------------------------------------------------------------------------------------------

int CSocketAPI::parseInt(const char* buf, int len, int& value)
{
    if (len < 4)
        return -5;
    value = byte2Int(buf);
    return 1;
}

int CSocketAPI::parseInts(const char* buf, int len, std::vector<int>& out)
{
    if (len < 4 || !holdsItems(len, load32(buf), 4))
        return -5;
    const unsigned int count = load32(buf);
    const size_t first = out.size();
    out.resize(first + count);
    for (unsigned int i = 0; i < count; ++i)
        out[first + i] = static_cast<int>(load32(buf + 4 + 4 * size_t(i)));
    return 1;
}

int CSocketAPI::parseBytes(const char* buf, int len, std::vector<unsigned char>& out)
{
    if (len < 4 || !holdsItems(len, load32(buf), 1))
        return -5;
    out.insert(out.end(), buf + 4, buf + 4 + load32(buf));
    return 1;
}

int CSocketAPI::parseStrings(const char* buf, int len, QStringList& out)
{
    if (len < 4)
        return -5;
    const unsigned int count = load32(buf);
    unsigned int need = 4 + 2 * count; // wraps, and is compared as signed: the items below are then checked one by one
    if (len < static_cast<int>(need))
        return -5;
    int pos = 4;
    for (unsigned int i = 0; i < count; ++i) {
        if (len - pos < 2)
            return -5; // only after a wrapped count
        const int size = byte2UShort(buf + pos);
        pos += 2;
        need += static_cast<unsigned int>(size);
        if (len < static_cast<int>(need))
            return 0;
        if (len - pos < size)
            return -5; // only after a wrapped count
        QString text;
        byte2Str(buf + pos, size, text); // an item that holds no whole string stays an empty text
        out.append(text);
        pos += size;
    }
    return 1;
}

} // namespace gqdb
