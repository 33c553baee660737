// Logs the value of a server's point every second. Ends on SIGTERM or SIGINT, without losing a line of the log.
//   pollingService HOST PORT FILE POINT     against: gqtool station, point 1000

#include <gqLib/gqFileLog.h>
#include <gqLib/returningClient.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>

class PointClient : public gqdb::CReturningTcpClient {
public:
    using CReturningTcpClient::CReturningTcpClient;

    // Returns a line for the log: the value of a point, or why there is none.
    QString read(unsigned int pointId)
    {
        std::vector<gqdb::PointRealData> values;
        int result = ready(); // connects if necessary
        if (result == 1)
            result = readValues(values);
        if (result != 1)
            return QString("no values: %1").arg(result);
        for (const gqdb::PointRealData& value : values) {
            if (value.pointId == pointId)
                return QString("point %1: %2").arg(pointId).arg(value.value);
        }
        return QString("no point %1").arg(pointId);
    }

private:
    static constexpr unsigned char readValuesCommand = 0x35; // agreed with the server

    int readValues(std::vector<gqdb::PointRealData>& values)
    {
        QByteArray frame;
        addHeader(readValuesCommand, 0, 0, frame);
        int2Byte(0, frame); // the payload that this command expects
        addEnd(frame);

        std::vector<unsigned char> bytes;
        const int result = requestBytes(frame, 0, bytes);
        if (result != 1)
            return result;
        return byte2PointRealDatas(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()), values);
    }
};

int main(int argc, char* argv[])
{
    if (argc != 5) {
        std::fprintf(stderr, "usage: pollingService HOST PORT FILE POINT\n");
        return 2;
    }
    const unsigned int pointId = static_cast<unsigned int>(std::strtoul(argv[4], nullptr, 10));
    //! [main]
    sigset_t endings;
    sigemptyset(&endings);
    sigaddset(&endings, SIGTERM);
    sigaddset(&endings, SIGINT);
    pthread_sigmask(SIG_BLOCK, &endings, nullptr); // before any thread starts: threads inherit it

    CGqFileLog log;
    log.init(argv[3]);
    PointClient client(argv[1], std::atoi(argv[2]), 3000); // time-outs in ms
    const timespec pause = {1, 0};
    bool saved = true;
    do {
        log.info(client.read(pointId));
        saved = log.save();
    } while (saved && sigtimedwait(&endings, nullptr, &pause) == -1); // the pause, or a signal that was blocked
    log.info("ended");
    saved = log.save() && saved;
    //! [main]
    if (!saved)
        std::fprintf(stderr, "pollingService: cannot write %s\n", argv[3]);
    return saved ? 0 : 1;
}
