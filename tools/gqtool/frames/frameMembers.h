#pragma once

#include "frameStream.h"

#include <QJsonObject>

#include <string>
#include <variant>

// What a stream contains as JSON; tests/golden/README.md describes the members.

// A member of the JSON object of an item, in the order of the bytes.
struct FrameMember {
    const char* name;
    QByteArray bytes; // null if it is derived from other members
    std::variant<long long, std::string> value;
};

// All members that are known without the form of the payload.
std::vector<FrameMember> membersOf(const StreamItem& item);
QJsonObject jsonOf(const StreamItem& item);
