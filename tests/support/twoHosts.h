#pragma once

#include "support/plainSockets.h"

// Two hosts connected by a cable: network namespaces and a veth pair, set up by iproute2's `ip`. Near is 10.1.0.1, far
// 10.1.0.2, the broadcast address is 10.1.0.255, and the default route uses the cable. A socket belongs to the host
// that was entered when it was created. The destructor returns to the host of the test program.
//
// Needs permission to create namespaces, usually root. If `exist` is false, skip the test.
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
