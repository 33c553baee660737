#include "frameMembers.h"

#include <byte2Val.h>

using gqdb::CByte2Val;

static FrameMember numberMember(const char* name, unsigned int value, int size)
{
    QByteArray bytes(4, '\0');
    CByte2Val::int2Byte(value, bytes.data());
    bytes.truncate(size);
    return {name, bytes, static_cast<long long>(value)};
}

static FrameMember hexMember(const char* name, const QByteArray& bytes)
{
    return {name, bytes.isNull() ? QByteArray("") : bytes, bytes.toHex().toStdString()};
}

static FrameMember derivedMember(const char* name, long long value)
{
    return {name, QByteArray(), value};
}

static FrameMember faultMember(const char* fault)
{
    return {"fault", QByteArray(), fault};
}

static void addFields(const StreamItem& item, std::vector<FrameMember>& members)
{
    const Frame& frame = item.content;
    members.push_back(numberMember("length", frame.length, 4));
    members.push_back(numberMember("sequence", static_cast<unsigned int>(frame.sequence), 2));
    members.push_back(numberMember("arg2", frame.arg2, 1));
    members.push_back(numberMember("arg1", frame.arg1, 1));
    members.push_back(numberMember("command", frame.command, 1));
    members.push_back(hexMember("payload", frame.payload));
    if (!frame.check.isEmpty())
        members.push_back(hexMember("check", frame.check));
    if (item.kind != StreamItem::cut)
        members.push_back(hexMember("end", QByteArray(1, static_cast<char>(frame.end))));
}

std::vector<FrameMember> membersOf(const StreamItem& item)
{
    std::vector<FrameMember> members = {derivedMember("offset", item.offset)};
    switch (item.kind) {
    case StreamItem::garbage:
        members.push_back(hexMember("garbage", item.bytes));
        break;
    case StreamItem::cutHeader:
        members.push_back(hexMember("header", item.bytes));
        members.push_back(faultMember("cut"));
        break;
    case StreamItem::badLength:
        members.push_back(derivedMember("length", item.content.length));
        members.push_back(faultMember("length"));
        break;
    case StreamItem::frame:
        addFields(item, members);
        break;
    case StreamItem::wrongEnd:
        addFields(item, members);
        members.push_back(faultMember("end"));
        break;
    case StreamItem::cut:
        addFields(item, members);
        members.push_back(faultMember("cut"));
        break;
    }
    return members;
}

QJsonObject jsonOf(const StreamItem& item)
{
    QJsonObject json;
    for (const FrameMember& member : membersOf(item)) {
        const auto* text = std::get_if<std::string>(&member.value);
        json[QLatin1String(member.name)] =
            text == nullptr ? QJsonValue(qint64(std::get<long long>(member.value))) : QString::fromStdString(*text);
    }
    return json;
}
