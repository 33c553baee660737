#include "support/twoHosts.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include <fcntl.h>
#include <sched.h>

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

TwoHosts::TwoHosts() : home(presentHost()), complete(make()) {}

TwoHosts::~TwoHosts()
{
    if (far >= 0) // else home was never left
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
    enterFar();
    return setUp("far", "10.1.0.2");
}

void TwoHosts::enter(int host)
{
    EXPECT_EQ(::setns(host, CLONE_NEWNET), 0);
}
