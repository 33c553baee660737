#include "documentEncoder.h"

#include "gqtool/closestName.h"
#include "gqtool/frames/frameCodec.h"
#include "gqtool/records/recordJson.h"
#include "shared/text.h"

static const QStringList usedMembers = {"as", "value", "behind"};
static const QStringList knownMembers = {"as",   "behind",  "direction",  "faults",    "fields",
                                         "form", "library", "moreFaults", "transport", "value"};

void DocumentEncoder::fail(const QStringList& messages)
{
    errorCount += messages.size();
    firstErrors += messages.mid(0, errorLimit - firstErrors.size());
}

// --- Members ------------------------------------------------------------------------------------------------------

bool DocumentEncoder::wants(const std::string& name)
{
    const QString text = QString::fromStdString(name);
    if (!knownMembers.contains(text))
        fail({Text::tr("%1 is unknown; the members are %2").arg(text, listText(knownMembers))});
    else if (seen.contains(text))
        fail({Text::tr("%1 occurs twice").arg(text)});
    const bool isUsed = usedMembers.contains(text) && !seen.contains(text);
    seen.append(text);
    return isUsed;
}

void DocumentEncoder::member(const std::string& name, const Json& value)
{
    if (name == "as")
        setForm(value);
    else if (name == "behind" && !takeBytes(value, behind))
        fail({Text::tr("behind must be a string of valid Unicode or {\"hex\": DIGITS}") + gotText(value)});
    else if (name == "value" && !seen.contains("as"))
        early = value;
    else if (name == "value")
        encodeValue(value);
}

static QString closestForm(const Json& name)
{
    return name.is_string() ? didYouMean(closestName(QString::fromStdString(name.get<std::string>()),
                                                     formNames() + QStringList{"frames"}))
                            : QString();
}

void DocumentEncoder::setForm(const Json& name)
{
    isFrames = name == "frames";
    if (name.is_string())
        form = findForm(QString::fromStdString(name.get_ref<const std::string&>()));
    if (form != nullptr)
        content = form->make();
    else if (!isFrames)
        fail({Text::tr("as must be a form of 'gqtool decode --list'") + gotText(name) + closestForm(name)});
    if (seen.contains("value"))
        encodeValue(early);
}

// --- The value ----------------------------------------------------------------------------------------------------

void DocumentEncoder::encodeValue(const Json& value)
{
    if (value.is_array() && beginItems("value")) {
        for (const Json& each : value)
            item(each);
        return;
    }
    if (isFrames)
        fail({Text::tr("value must be an array") + gotText(value)});
    if (form == nullptr)
        return;
    QByteArray bytes;
    const QStringList errors = takeJson(value, *content);
    if (!errors.isEmpty())
        fail(errors);
    else if (!content->write(bytes))
        fail({Text::tr("value cannot be written: the samples do not pack into 5000000 bytes")});
    encoded.add({bytes.constData(), static_cast<size_t>(bytes.size())});
}

bool DocumentEncoder::beginItems(const std::string& name)
{
    isCounted = name == "value" && form != nullptr && isList(*form);
    return isCounted || (name == "value" && isFrames);
}

void DocumentEncoder::item(const Json& value)
{
    const QString path = QString("value[%1]").arg(count);
    QByteArray bytes;
    if (isFrames) {
        fail(encodeFrame(value, path, bytes));
    } else {
        const std::unique_ptr<Content> record = content->makeItem();
        fail(takeJson(value, *record, path));
        record->write(bytes);
    }
    ++count;
    if (errorCount == 0)
        encoded.add({bytes.constData(), static_cast<size_t>(bytes.size())});
}

// ------------------------------------------------------------------------------------------------------------------

void DocumentEncoder::end()
{
    for (const char* name : {"as", "value"}) {
        if (!seen.contains(name))
            fail({Text::tr("%1 is missing").arg(name)});
    }
}

bool DocumentEncoder::printAll(const std::function<void(const QByteArray& bytes)>& print, QString& error)
{
    QByteArray countBytes;
    if (isCounted)
        gqdb::CByte2Val::int2Byte(count, countBytes);
    print(countBytes);
    const bool isPrinted = encoded.printAll(print, error);
    if (isPrinted)
        print(behind);
    return isPrinted;
}
