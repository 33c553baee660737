#include "definitionBench.h"

#include "byte2Rdb.h"
#include "comparison.h"
#include "definitions_generated.h"
#include "records.pb.h"

using gqdb::CByte2Rdb;
using gqdb::FloatPoint;

enum class Texts { atMost15Bytes, of40Bytes };

static std::vector<FloatPoint> somePoints(Texts texts)
{
    std::vector<FloatPoint> points(1000);
    for (size_t i = 0; i < points.size(); ++i) {
        FloatPoint& point = points[i];
        const std::string number = std::to_string(i);
        point.pointId = static_cast<unsigned int>(i);
        point.text1 = "B1.T" + number;
        point.text2 = "temperature";
        point.text3 = "degC";
        point.text4 = "unit 1";
        point.code2 = 1;
        point.text5 = "none";
        if (texts == Texts::of40Bytes) {
            for (std::string* text : {&point.text1, &point.text2, &point.text3, &point.text4, &point.text5})
                text->resize(40, '.');
        }
        for (int level = 0; level < 8; ++level)
            point.levels[level] = static_cast<float>(100 * level);
    }
    return points;
}

static peer::FloatPoints toMessage(const std::vector<FloatPoint>& points)
{
    peer::FloatPoints message;
    for (const FloatPoint& point : points) {
        peer::FloatPoint& item = *message.add_points();
        item.set_point_id(point.pointId);
        item.set_text1(point.text1);
        item.set_code1(point.code1);
        item.set_text2(point.text2);
        item.set_text3(point.text3);
        item.set_text4(point.text4);
        item.set_code2(point.code2);
        item.set_code3(point.code3);
        item.set_code4(point.code4);
        item.set_text5(point.text5);
        item.set_switch1(static_cast<unsigned char>(point.switch1));
        item.set_float1(point.float1);
        item.set_switch2(static_cast<unsigned char>(point.switch2));
        item.set_code5(point.code5);
        item.set_code6(point.code6);
        item.set_float2(point.float2);
        item.set_code7(point.code7);
        for (const float level : point.levels)
            item.add_levels(level);
    }
    return message;
}

static peer::flat::PointsT toObjects(const std::vector<FloatPoint>& points)
{
    peer::flat::PointsT objects;
    for (const FloatPoint& point : points) {
        auto item = std::make_unique<peer::flat::PointT>();
        item->point_id = point.pointId;
        item->text1 = point.text1;
        item->code1 = point.code1;
        item->text2 = point.text2;
        item->text3 = point.text3;
        item->text4 = point.text4;
        item->code2 = point.code2;
        item->code3 = point.code3;
        item->code4 = point.code4;
        item->text5 = point.text5;
        item->switch1 = static_cast<signed char>(point.switch1);
        item->float1 = point.float1;
        item->switch2 = static_cast<signed char>(point.switch2);
        item->code5 = point.code5;
        item->code6 = point.code6;
        item->float2 = point.float2;
        item->code7 = point.code7;
        item->levels.assign(std::begin(point.levels), std::end(point.levels));
        objects.points.push_back(std::move(item));
    }
    return objects;
}

static Side flatEncodeSide(const std::vector<FloatPoint>& points)
{
    return [=](benchmark::State& state) {
        const peer::flat::PointsT objects = toObjects(points);
        flatbuffers::FlatBufferBuilder builder(1 << 20);
        for (auto _ : state) {
            builder.Clear();
            builder.Finish(peer::flat::Points::Pack(builder, &objects));
            benchmark::ClobberMemory();
        }
    };
}

// Reads into the objects of the run before, which keep their memory.
static Side flatDecodeSide(const std::vector<FloatPoint>& points)
{
    return [=](benchmark::State& state) {
        const peer::flat::PointsT objects = toObjects(points);
        flatbuffers::FlatBufferBuilder builder(1 << 20);
        builder.Finish(peer::flat::Points::Pack(builder, &objects));
        peer::flat::PointsT back;
        for (auto _ : state) {
            peer::flat::GetPoints(builder.GetBufferPointer())->UnPackTo(&back);
            benchmark::ClobberMemory();
        }
        if (back.points.size() != points.size() || back.points[999]->text1 != points[999].text1)
            fail("the objects of FlatBuffers differ");
    };
}

// The aims: of encoding beside memcpy, Protocol Buffers and FlatBuffers, of decoding beside the copy and those two.
struct DefinitionAims {
    double encode;
    double encodeProtobuf;
    double encodeFlat;
    double decode;
    double decodeProtobuf;
    double decodeFlat;
};

static void compareDefinitions(const std::string& name, Texts texts, const DefinitionAims& aims)
{
    const std::vector<FloatPoint> points = somePoints(texts);
    QByteArray bytes;
    CByte2Rdb::floatPoints2Byte(points, bytes);
    const std::string serialized = toMessage(points).SerializeAsString();

    const auto encode = [=](benchmark::State& state) {
        QByteArray data;
        data.reserve(2048 * 1001);
        for (auto _ : state) {
            data.resize(0);
            CByte2Rdb::floatPoints2Byte(points, data);
            benchmark::ClobberMemory();
        }
        if (data != bytes)
            fail("the definitions' bytes differ");
    };
    const auto protobufEncode = [=](benchmark::State& state) {
        const peer::FloatPoints message = toMessage(points);
        std::string room(serialized.size(), '\0');
        for (auto _ : state) {
            if (!message.SerializeToArray(room.data(), static_cast<int>(room.size())))
                fail("Protocol Buffers failed");
            benchmark::ClobberMemory();
        }
    };
    const auto decode = [=](benchmark::State& state) {
        std::vector<FloatPoint> list;
        for (auto _ : state) {
            list.clear();
            if (CByte2Rdb::byte2FloatPoints(bytes.constData(), bytes.size(), list) != 1)
                fail("the library failed");
            benchmark::ClobberMemory();
        }
        if (list.size() != points.size() || list[999].text1 != points[999].text1 || list[999].levels[7] != 700)
            fail("the definitions differ");
    };
    const auto copyVector = [=](benchmark::State& state) {
        std::vector<FloatPoint> list;
        for (auto _ : state) {
            list.clear();
            list.insert(list.end(), points.begin(), points.end());
            benchmark::ClobberMemory();
        }
    };
    const auto protobufDecode = [=](benchmark::State& state) {
        peer::FloatPoints message;
        for (auto _ : state) {
            if (!message.ParseFromArray(serialized.data(), static_cast<int>(serialized.size())))
                fail("Protocol Buffers failed");
            benchmark::ClobberMemory();
        }
    };
    compare("encode " + name, encode,
            {{"memcpy", {{Clock::processor, aims.encode}}, copySide(bytes)},
             {"Protocol Buffers", {{Clock::processor, aims.encodeProtobuf}}, protobufEncode},
             {"FlatBuffers objects", {{Clock::processor, aims.encodeFlat}}, flatEncodeSide(points)}});
    compare("decode " + name, decode,
            {{"copy of the vector", {{Clock::processor, aims.decode}}, copyVector},
             {"Protocol Buffers", {{Clock::processor, aims.decodeProtobuf}}, protobufDecode},
             {"FlatBuffers objects", {{Clock::processor, aims.decodeFlat}}, flatDecodeSide(points)}});
}

void compareDefinitions()
{
    compareDefinitions("1,000 FloatPoint", Texts::atMost15Bytes, {6, 0.33, 1, 1.3, 0.4, 1});
    compareDefinitions("1,000 FloatPoint, long texts", Texts::of40Bytes, {});
}
