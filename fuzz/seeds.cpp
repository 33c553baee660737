#include "seeds.h"

#include "gqtool/frames/frameMembers.h"
#include "gqtool/records/recordFields.h"
#include "support/goldenFile.h"
#include "toolInput.h"

#include <QJsonDocument>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

static QByteArray contentOf(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    std::stringstream content;
    content << file.rdbuf();
    return QByteArray::fromStdString(content.str());
}

static QByteArray recordingOf(const QByteArray& frame)
{
    QByteArray text;
    FrameStream stream;
    for (const char* side : {"client", "station"}) {
        for (const StreamItem& item : stream.feed(frame)) {
            QJsonObject json = jsonOf(item);
            json["connection"] = 1;
            json["from"] = side;
            json["time"] = "2026-01-31T23:59:59.000000Z";
            text += QJsonDocument(json).toJson(QJsonDocument::Compact) + '\n';
        }
    }
    return '\1' + text;
}

// Adds seeds for gqtool: JSON, a recording, and bytes of a record. The first bytes select form, piece size or timing.
static void addForTools(const std::string& name, const QByteArray& bytes, std::vector<QByteArray>& seeds)
{
    const QByteArray json = contentOf(GQLIB_GOLDEN "/" + name.substr(0, name.size() - 4) + ".json");
    if (json.isEmpty())
        return;
    seeds.push_back('\7' + json);
    const QString formName = QJsonDocument::fromJson(json)["as"].toString();
    if (formName == "frames") {
        seeds.push_back(recordingOf(bytes));
        seeds.push_back(QByteArray::fromHex("040007") + bytes); // decodeFrames with its map, in pieces of 8 bytes
    }
    for (size_t i = 0; i < recordForms().size(); ++i) {
        if (formName == recordForms()[i].name)
            seeds.push_back(QByteArray(1, static_cast<char>(i)) + '\7' + bytes);
    }
}

static const char* const stationFiles[] = {
    "greeting 1 late 5\nreply every/10 error -2 # comment\ncommand 0x30 3-7 split 3\nreply 2% silent\n"
    "reply every close-after 9\nreply 4 down 100\nreply 5 wrong-end\nreply 6 together\nreply 7 pieces 1\n"
    "greeting 8 none\n",
    "{\"commands\": [\n{\"command\": 48, \"reply\": \"echo\"},\n{\"command\": \"0x31\", \"payload\": \"01 02\", "
    "\"error\": -3},\n{\"command\": 50, \"reply\": [{\"int\": 7}, {\"ints\": [1, -2]}]},\n{\"command\": 51, "
    "\"reply\": {\"strings\": [\"a\", \"\"]}},\n{\"command\": 52, \"reply\": {\"bytes\": \"ff00\"}},\n{\"command\": "
    "53, \"reply\": {\"as\": \"boolData\", \"value\": {\"value\": 1, \"stamp1\": 2, \"stamp2\": 3, \"flag1\": 4}}}]}",
    "{\"commands\": [{\"command\": 254, \"error\": 1}]}",
};

// Adds frames for decodeFrames, with lists whose counts wrap their size, and a text without its last byte.
static void addCountedFrames(std::vector<QByteArray>& seeds)
{
    for (const char form : {'\2', '\3', '\4'}) { // ints, bytes, strings
        for (const unsigned int count : {1U, 0x40000001U, 0x80000001U, 0xffffffffU})
            seeds.push_back(QByteArray(1, '\0') + form + '\7' +
                            frameOf(0x70, 1, word4(static_cast<int>(count)) + QByteArray::fromHex("050002004142")));
    }
}

std::vector<QByteArray> allSeeds()
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(GQLIB_GOLDEN)) {
        if (entry.path().extension() == ".hex")
            names.push_back(std::filesystem::relative(entry.path(), GQLIB_GOLDEN).string());
    }
    std::sort(names.begin(), names.end());

    std::vector<QByteArray> seeds;
    for (const std::string& name : names) {
        const QByteArray bytes = goldenFile(name);
        seeds.push_back(bytes);
        seeds.push_back(bytes.mid(10));
        seeds.push_back(QByteArray::fromHex("01000000") + bytes);
        seeds.push_back(QByteArray::fromHex("02000000") + bytes + bytes);
        const char size = static_cast<char>(std::min(static_cast<int>(bytes.size()), 255));
        seeds.push_back(size + bytes + size + bytes);
        addForTools(name, bytes, seeds);
    }
    for (const auto& entry : std::filesystem::directory_iterator(GQLIB_GOLDEN "/dumps"))
        seeds.push_back(contentOf(entry.path()));
    for (const char* file : stationFiles)
        seeds.push_back(file);
    addCountedFrames(seeds);
    return seeds;
}
