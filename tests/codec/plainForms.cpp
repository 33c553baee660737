#include "plainForms.h"

#include <QString>
#include <QtEndian>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <new>
#include <vector>

namespace plainForms {
using namespace gqdb; // the records
}

#define GQLIB_PLAIN_FORMS
#define gqdb plainForms
#include "byteRoom.cpp"
#include "floatRealItem.h"
#include "samples.cpp"
#include "shortText.h"
#undef gqdb

void plainForms::copyText(const std::string& text, char* to)
{
    copyText(text.data(), text.size(), to);
}

QByteArray plainForms::bytesOf(const gqdb::FloatRealData& record)
{
    FloatRealItem item;
    item = record;
    return {item.bytes, sizeof item.bytes};
}

gqdb::FloatRealData plainForms::recordOf(const QByteArray& bytes)
{
    return *reinterpret_cast<const FloatRealItem*>(bytes.constData());
}
