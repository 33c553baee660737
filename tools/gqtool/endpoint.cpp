#include "endpoint.h"

#include "commandLine.h"
#include "integer.h"
#include "shared/text.h"

#include <QRegularExpression>

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <future>
#include <memory>
#include <thread>

// --- Text ---------------------------------------------------------------------------------------------------------

static bool readAddress(const QString& text, in_addr& address)
{
    return inet_pton(AF_INET, text.toLocal8Bit().constData(), &address) == 1;
}

// Returns true for the other addresses that the C library accepts in place of a name: 1.2.3 is 1.2.0.3, 010 is 8.
static bool isOtherAddress(const QString& text)
{
    static const QRegularExpression digitsAndDots("^[0-9.]*$");
    in_addr address;
    return !readAddress(text, address) &&
           (text.contains(digitsAndDots) || inet_aton(text.toLocal8Bit().constData(), &address) != 0);
}

QString addressError(const QString& text)
{
    in_addr address;
    if (readAddress(text, address))
        return {};
    return Text::tr("ADDRESS must be dotted IPv4, four numbers from 0 to 255, got '%1'").arg(text);
}

QString readEndpoint(const QString& text, Endpoint& endpoint)
{
    static const QRegularExpression notInNames("[\\s:/\\[\\]]");
    const int colon = text.lastIndexOf(':');
    if (colon < 1)
        return Text::tr("HOST:PORT is required, got '%1'").arg(text);
    endpoint.host = text.left(colon);
    if (endpoint.host.contains(notInNames))
        return Text::tr("HOST must be a name or a dotted IPv4 address, got '%1'").arg(endpoint.host);
    if (isOtherAddress(endpoint.host))
        return Text::tr("HOST must be a name or four numbers from 0 to 255, got '%1'").arg(endpoint.host);
    if (!readInt(text.mid(colon + 1), 1, 65535, endpoint.port))
        return Text::tr("PORT must be an integer from 1 to 65535, got '%1'").arg(text.mid(colon + 1));
    return {};
}

// --- Names --------------------------------------------------------------------------------------------------------

struct NameAnswer {
    QStringList addresses;
    Text error; // the resolver's reason if there are none
};

static int lookUp(const QByteArray& name, int family, QStringList& addresses)
{
    addrinfo hints = {};
    hints.ai_family = family;
    hints.ai_socktype = SOCK_STREAM; // otherwise each address is returned once per socket type
    addrinfo* found = nullptr;
    const int result = getaddrinfo(name.constData(), nullptr, &hints, &found);
    for (const addrinfo* entry = found; entry != nullptr; entry = entry->ai_next) {
        char text[INET6_ADDRSTRLEN] = "";
        getnameinfo(entry->ai_addr, entry->ai_addrlen, text, sizeof text, nullptr, 0, NI_NUMERICHOST);
        addresses.append(text);
    }
    if (found != nullptr)
        freeaddrinfo(found);
    return result;
}

static NameAnswer askResolver(const QByteArray& name)
{
    NameAnswer answer;
    const int result = lookUp(name, AF_INET, answer.addresses);
    if (!answer.addresses.isEmpty())
        return answer;
    answer.error = result == EAI_SYSTEM ? errorText(errno) : libraryText(gai_strerror(result));
    QStringList others;
    lookUp(name, AF_INET6, others);
    if (!others.isEmpty())
        answer.error = Text::tr("it has only IPv6 addresses (%1), and the frame protocol needs IPv4").arg(others[0]);
    return answer;
}

bool resolveHost(const QString& host, int timeoutMs, QStringList& addresses, Text& error)
{
    in_addr address;
    if (readAddress(host, address)) {
        char text[INET_ADDRSTRLEN] = "";
        addresses = QStringList{inet_ntop(AF_INET, &address, text, sizeof text)};
        return true;
    }
    // getaddrinfo has no time-out, so a thread calls it. If the time runs out, the thread continues until the program
    // ends.
    const auto promise = std::make_shared<std::promise<NameAnswer>>();
    std::future<NameAnswer> future = promise->get_future();
    std::thread([promise, name = host.toLocal8Bit()] { promise->set_value(askResolver(name)); }).detach();
    if (future.wait_for(std::chrono::milliseconds(timeoutMs)) != std::future_status::ready) {
        error = Text::tr("cannot resolve '%1': no answer within %2 ms").arg(host).arg(timeoutMs);
        return false;
    }
    const NameAnswer answer = future.get();
    addresses = answer.addresses;
    if (addresses.isEmpty())
        error = Text::tr("cannot resolve '%1': %2").arg(host, answer.error);
    return !addresses.isEmpty();
}
