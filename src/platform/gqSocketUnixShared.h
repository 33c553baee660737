#pragma once

#include "gqSocketUnix.h"

#include <netinet/in.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <string>
#include <vector>

// Operations that several endpoints share. Internal. Unless documented here, the results are those of the operation in
// gqSocketUnix.h.
namespace endpoint {

// A negative time stays negative, so that the system refuses it.
timeval toTimeval(int ms);

sockaddr_in toAddress(const std::string& address, int port);
void fromAddress(const sockaddr_in& end, std::string& address, int& port);

// Returns the result of setsockopt(2) at the level SOL_SOCKET.
int setOption(int descriptor, int option, int value);

// Returns the result of bind(2). An empty address and "127.0.0.1" mean every interface.
int bindTo(int descriptor, const std::string& address, int port);

int connectTo(int descriptor, const std::string& address, int port);
int receive(int descriptor, char* buffer, int length);
int transmit(int descriptor, const char* buffer, int length);
int waitWritable(int descriptor, int ms);
int selectOne(int descriptor, int ms, int& readable, int& writable, int& exceptional);

} // namespace endpoint

// A descriptor that is closed with the object unless released, so that a failed allocation does not leave it open.
class CHeldDescriptor {
public:
    explicit CHeldDescriptor(int held) : descriptor(held) {}
    ~CHeldDescriptor();
    CHeldDescriptor(const CHeldDescriptor&) = delete;
    CHeldDescriptor& operator=(const CHeldDescriptor&) = delete;

    int release();

private:
    int descriptor; // -1 after releasing
};

// Descriptors for select(2), with room for any number: an fd_set ends at 1023, and hardened builds abort on -1. Up to
// 1023 nothing is allocated. A negative descriptor gets a spare bit after those that select(2) examines, so that it
// stays set.
class CDescriptorSet {
public:
    explicit CDescriptorSet(int highest)
        : spare(highest < 0 ? 0 : (static_cast<size_t>(highest) / wordBits + 1) * wordBits), few(),
          many(spare < fewWords * wordBits ? 0 : spare / wordBits + 1)
    {
    }

    void add(int descriptor) { words()[bit(descriptor) / wordBits] |= 1UL << bit(descriptor) % wordBits; }
    int contains(int descriptor) { return words()[bit(descriptor) / wordBits] >> bit(descriptor) % wordBits & 1; }
    fd_set* data() { return reinterpret_cast<fd_set*>(words()); }

private:
    static constexpr size_t wordBits = 8 * sizeof(unsigned long);
    static constexpr size_t fewWords = 1024 / wordBits + 1; // including the word of the spare bit

    unsigned long* words() { return many.empty() ? few : many.data(); }
    size_t bit(int descriptor) const { return descriptor < 0 ? spare : static_cast<size_t>(descriptor); }

    size_t spare; // the bit of a negative descriptor
    unsigned long few[fewWords];
    std::vector<unsigned long> many;
};
