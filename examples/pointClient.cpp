// Prints the current values of a server's points.
//   pointClient HOST PORT     against: gqtool station

#include <gqLib/tcpApi.h>

#include <cstdio>
#include <cstdlib>

//! [client]
class PointClient : public gqdb::CTcpAPI {
public:
    // Replaces `values`. Returns 1, or a result code of the client or of the record reader.
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
        values.clear(); // the reader appends
        return byte2PointRealDatas(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()), values);
    }

private:
    static constexpr unsigned char readValuesCommand = 0x35; // agreed with the server
};
//! [client]

int main(int argc, char* argv[])
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: pointClient HOST PORT\n");
        return 2;
    }
    PointClient client;
    std::vector<gqdb::PointRealData> values;
    int result = client.connect(argv[1], std::atoi(argv[2]));
    if (result == 1)
        result = client.readValues(values);
    if (result != 1) {
        std::fprintf(stderr, "no values: %d\n", result);
        return 1;
    }
    for (const gqdb::PointRealData& value : values)
        std::printf("point %u: %g\n", value.pointId, value.value);
    return 0;
}
