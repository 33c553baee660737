// Asks a station for integers and builds and parses all frames by hand. framesByLibrary does the same with the library.
//   framesByHand HOST PORT COUNT     against: gqtool station

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

//! [build]
static void put32(std::string& bytes, uint32_t value)
{
    for (int shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>(value >> shift);
}

static std::string buildRequest(unsigned char command, const std::string& payload)
{
    static uint16_t sequence = 0;
    std::string frame = "\x68";
    put32(frame, static_cast<uint32_t>(payload.size()));
    frame += static_cast<char>(sequence);
    frame += static_cast<char>(sequence >> 8);
    ++sequence;
    frame.append(2, '\0'); // arg2, arg1
    frame += static_cast<char>(command);
    frame += payload;
    frame.append(2, '\0'); // checksum
    frame += '\x16';
    return frame;
}
//! [build]

//! [read]
static bool readExactly(int descriptor, std::string& bytes, size_t size)
{
    while (bytes.size() < size) {
        char part[4096];
        const ssize_t count = recv(descriptor, part, std::min(size - bytes.size(), sizeof part), 0);
        if (count <= 0)
            return false;
        bytes.append(part, static_cast<size_t>(count));
    }
    return true;
}

static uint32_t get32(const std::string& bytes, size_t offset)
{
    uint32_t value = 0;
    for (size_t i = 0; i < 4; ++i)
        value |= static_cast<uint32_t>(static_cast<unsigned char>(bytes[offset + i])) << 8 * i;
    return value;
}

// Returns false if the connection ended or the bytes are no frame.
static bool readFrame(int descriptor, unsigned char& command, std::string& payload)
{
    std::string frame;
    if (!readExactly(descriptor, frame, 10) || frame[0] != 0x68)
        return false;
    const size_t length = get32(frame, 1);
    if (!readExactly(descriptor, frame, length + 13) || frame.back() != 0x16)
        return false;
    command = static_cast<unsigned char>(frame[9]);
    payload = frame.substr(10, length);
    return true;
}
//! [read]

//! [parse]
static bool parseIntegers(const std::string& payload, std::vector<int>& values)
{
    if (payload.size() < 4 || (payload.size() - 4) / 4 < get32(payload, 0))
        return false;
    for (uint32_t i = 0; i < get32(payload, 0); ++i)
        values.push_back(static_cast<int>(get32(payload, 4 + 4 * size_t(i))));
    return true;
}
//! [parse]

static int connectTo(const char* host, int port)
{
    const int descriptor = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in peer = {};
    peer.sin_family = AF_INET;
    peer.sin_port = htons(static_cast<uint16_t>(port));
    if (inet_pton(AF_INET, host, &peer.sin_addr) != 1 ||
        connect(descriptor, reinterpret_cast<const sockaddr*>(&peer), sizeof peer) != 0) {
        close(descriptor);
        return -1;
    }
    return descriptor;
}

int main(int argc, char* argv[])
{
    if (argc != 4) {
        std::fprintf(stderr, "usage: framesByHand HOST PORT COUNT\n");
        return 2;
    }
    //! [use]
    const int descriptor = connectTo(argv[1], std::atoi(argv[2]));
    unsigned char command = 0;
    std::string payload;
    if (descriptor < 0 || !readFrame(descriptor, command, payload)) { // the greeting
        std::fprintf(stderr, "framesByHand: no server at %s\n", argv[1]);
        return 1;
    }
    std::string count;
    put32(count, static_cast<uint32_t>(std::atoi(argv[3])));
    const std::string request = buildRequest(0x20, count);
    std::vector<int> values;
    if (send(descriptor, request.data(), request.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(request.size()) ||
        !readFrame(descriptor, command, payload) || command == 0xFF || !parseIntegers(payload, values)) {
        std::fprintf(stderr, "framesByHand: no values\n");
        return 1;
    }
    //! [use]
    for (const int value : values)
        std::printf("%d\n", value);
    close(descriptor);
    return 0;
}
