#include "frameMembers.h"

static QString hexOf(const QByteArray& bytes)
{
    return bytes.toHex();
}

static void addFields(const StreamItem& item, std::vector<FrameMember>& members)
{
    const Frame& frame = item.content;
    members.push_back({"length", 4, static_cast<qint64>(frame.length)});
    members.push_back({"sequence", 2, frame.sequence});
    members.push_back({"arg2", 1, frame.arg2});
    members.push_back({"arg1", 1, frame.arg1});
    members.push_back({"command", 1, frame.command});
    members.push_back({"payload", frame.payload.size(), hexOf(frame.payload)});
    if (!frame.check.isEmpty())
        members.push_back({"check", frame.check.size(), hexOf(frame.check)});
    if (item.kind != StreamItem::cut)
        members.push_back({"end", 1, hexOf(QByteArray(1, static_cast<char>(frame.end)))});
}

std::vector<FrameMember> membersOf(const StreamItem& item)
{
    std::vector<FrameMember> members = {{"offset", -1, item.offset}};
    switch (item.kind) {
    case StreamItem::garbage:
        members.push_back({"garbage", item.bytes.size(), hexOf(item.bytes)});
        break;
    case StreamItem::cutHeader:
        members.push_back({"header", item.bytes.size(), hexOf(item.bytes)});
        members.push_back({"fault", -1, "cut"});
        break;
    case StreamItem::badLength:
        members.push_back({"length", -1, static_cast<qint64>(item.content.length)});
        members.push_back({"fault", -1, "length"});
        break;
    case StreamItem::frame:
        addFields(item, members);
        break;
    case StreamItem::wrongEnd:
        addFields(item, members);
        members.push_back({"fault", -1, "end"});
        break;
    case StreamItem::cut:
        addFields(item, members);
        members.push_back({"fault", -1, "cut"});
        break;
    }
    return members;
}

QJsonObject jsonOf(const StreamItem& item)
{
    QJsonObject json;
    for (const FrameMember& member : membersOf(item))
        json[QLatin1String(member.name)] = member.value;
    return json;
}
