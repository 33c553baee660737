#include "echoPeer.h"

#include "comparison.h"

#include <csignal>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

OneCore::OneCore() : before()
{
    sched_getaffinity(0, sizeof before, &before);
    int first = 0;
    while (first < CPU_SETSIZE - 1 && !CPU_ISSET(first, &before))
        ++first;
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(first, &one);
    sched_setaffinity(0, sizeof one, &one);
}

OneCore::~OneCore()
{
    sched_setaffinity(0, sizeof before, &before);
}

// Returns a listener on a free port, which is stored in `port`.
static int listenOnLoopback(int& port)
{
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in end = {};
    end.sin_family = AF_INET;
    end.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof end;
    if (bind(listener, reinterpret_cast<const sockaddr*>(&end), size) != 0 || listen(listener, 1) != 0 ||
        getsockname(listener, reinterpret_cast<sockaddr*>(&end), &size) != 0)
        fail("cannot listen on the loopback address");
    port = ntohs(end.sin_port);
    return listener;
}

static void greetAndEcho(int listener, const QByteArray& greeting)
{
    const int connection = accept(listener, nullptr, nullptr);
    send(connection, greeting.constData(), size_t(greeting.size()), MSG_NOSIGNAL);
    char bytes[4096];
    ssize_t count;
    while ((count = recv(connection, bytes, sizeof bytes, 0)) > 0)
        send(connection, bytes, size_t(count), MSG_NOSIGNAL);
}

EchoPeer::EchoPeer(const QByteArray& greeting)
{
    const int listener = listenOnLoopback(number);
    process = fork();
    if (process < 0)
        fail("cannot start the peer's process");
    if (process == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL); // ends with the program, however that ends
        const OneCore core;
        greetAndEcho(listener, greeting);
        _exit(0);
    }
    close(listener);
}

EchoPeer::~EchoPeer()
{
    kill(process, SIGKILL);
    waitpid(process, nullptr, 0);
}
