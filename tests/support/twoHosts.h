#pragma once

#include "support/plainSockets.h"

// Two hosts with a cable between them: network namespaces of the kernel and a veth pair, which the iproute2 program
// `ip` sets up. Near is 10.1.0.1, far 10.1.0.2, the broadcast address is 10.1.0.255, and what has no other way goes
// into the cable. A socket stays on the host that was entered when it was made; the destructor goes back to the host of
// the test program.
//
// It takes a system that lets the test do so, mostly as root: where `exist` is false, skip the test.
class TwoHosts {
public:
    TwoHosts();
    ~TwoHosts();
    TwoHosts(const TwoHosts&) = delete;
    TwoHosts& operator=(const TwoHosts&) = delete;

    bool exist() const { return complete; }
    void enterNear() { enter(near); }
    void enterFar() { enter(far); }

private:
    static void enter(int host);
    bool make();

    Descriptor home;
    Descriptor near;
    Descriptor far;
    bool complete;
};
