// Asks a server for its state by the name of its host.
//   hostNames HOST PORT     against: gqtool station; HOST is a name or dotted IPv4 text

#include <gqLib/returningClient.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <arpa/inet.h>
#include <netdb.h>

//! [resolve]
// Returns the IPv4 addresses of a host as dotted text, in the order in which to try them. If there is none, it is
// empty, and `reason` says why.
static std::vector<std::string> addressesOf(const std::string& host, std::string& reason)
{
    addrinfo wanted = {};
    wanted.ai_family = AF_INET;
    wanted.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const int failure = getaddrinfo(host.c_str(), nullptr, &wanted, &found);
    if (failure != 0) {
        reason = gai_strerror(failure);
        return {};
    }
    std::vector<std::string> addresses;
    for (const addrinfo* entry = found; entry != nullptr; entry = entry->ai_next) {
        char text[INET_ADDRSTRLEN];
        inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in*>(entry->ai_addr)->sin_addr, text, sizeof text);
        addresses.emplace_back(text);
    }
    freeaddrinfo(found);
    return addresses;
}
//! [resolve]

int main(int argc, char* argv[])
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: hostNames HOST PORT\n");
        return 2;
    }
    std::string reason;
    const std::vector<std::string> addresses = addressesOf(argv[1], reason);
    if (addresses.empty()) {
        std::fprintf(stderr, "hostNames: cannot resolve %s: %s\n", argv[1], reason.c_str());
        return 1;
    }
    //! [use]
    for (const std::string& address : addresses) {
        gqdb::CReturningTcpClient client(address, std::atoi(argv[2]), 3000);
        if (client.ready() != 1)
            continue; // the next address
        const int state = client.systemState();
        if (client.isConnected()) {
            std::printf("%s: state %d\n", address.c_str(), state);
            return 0;
        }
    }
    //! [use]
    std::fprintf(stderr, "hostNames: no answer from %s\n", argv[1]);
    return 1;
}
