#include "support/twoHosts.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sched.h>
#include <sys/socket.h>

static Descriptor presentHost()
{
    return Descriptor(::open("/proc/thread-self/ns/net", O_RDONLY));
}

static bool succeeds(const std::string& commands)
{
    return std::system(("{ " + commands + "; } >/dev/null 2>&1").c_str()) == 0;
}

static bool setUp(const std::string& device, const std::string& address)
{
    return succeeds("ip link set lo up && ip addr add " + address + "/24 broadcast + dev " + device + //
                    " && ip link set " + device + " up && ip route add default dev " + device);
}

// Listens on a free port of every interface of the current host.
static Descriptor datagramSocket()
{
    Descriptor descriptor(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const int on = 1;
    ::setsockopt(descriptor, SOL_SOCKET, SO_BROADCAST, &on, sizeof on);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    static_cast<void>(::bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address));
    return descriptor;
}

// The system drops what it sends until it has noticed that both ends of a new cable are connected.
static bool becomesReachable(int from, int to)
{
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    ::getsockname(to, reinterpret_cast<sockaddr*>(&address), &size);
    address.sin_addr.s_addr = ::inet_addr("10.1.0.255");
    const auto start = Clock::now();
    do {
        ::sendto(from, "x", 1, 0, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    } while (!becomes(to, POLLIN, 5) && msSince(start) < limitMs);
    return becomes(to, POLLIN, 0);
}

TwoHosts::TwoHosts() : home(presentHost()), complete(make()) {}

TwoHosts::~TwoHosts()
{
    if (far >= 0) // otherwise the home host was never left
        enter(home);
}

bool TwoHosts::make()
{
    if (::unshare(CLONE_NEWNET) != 0)
        return false;
    far = presentHost();
    if (::unshare(CLONE_NEWNET) != 0)
        return false;
    near = presentHost();
    if (!succeeds("ip link add near type veth peer name far && ip link set far netns /proc/self/fd/" +
                  std::to_string(far)))
        return false;
    if (!setUp("near", "10.1.0.1"))
        return false;
    const Descriptor atNear = datagramSocket();
    enterFar();
    if (!setUp("far", "10.1.0.2"))
        return false;
    const Descriptor atFar = datagramSocket();
    return becomesReachable(atNear, atFar) && becomesReachable(atFar, atNear);
}

void TwoHosts::enter(int host)
{
    EXPECT_EQ(::setns(host, CLONE_NEWNET), 0);
}
