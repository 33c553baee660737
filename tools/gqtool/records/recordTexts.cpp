#include "recordTexts.h"

#include "recordDecoding.h"
#include "shared/text.h"

#include <utility>

// Takes the index off a name: "[2].text1" becomes "text1". Returns "[2]", or nothing if the name has no index.
static QString takeIndex(QString& name)
{
    const int end = name.startsWith('[') ? name.indexOf(']') + 1 : 0;
    QString index = name.left(end);
    name.remove(0, name.mid(end).startsWith('.') ? end + 1 : end);
    return index;
}

class TextListener : public DecodeListener {
public:
    TextListener(RecordTexts& texts, bool wantsTexts) : result(texts), wants(wantsTexts) {}

    void row(const DecodedRow& row) override
    {
        if (!wants)
            return;
        std::string path;
        row.appendLabel(path);
        QString name = QString::fromStdString(path);
        const QString index = result.isList ? takeIndex(name) : QString();
        if (result.isList && index.isEmpty())
            return; // the count
        std::string value;
        appendJson(value, row.value);
        const QString text = value.empty() ? name : name + ' ' + QString::fromStdString(value);
        if (result.isList && index == lastIndex)
            result.texts.last() += ", " + text;
        else
            result.texts.append(text);
        lastIndex = index;
    }
    void begin(const char* name, char bracket) override { json.begin(name, bracket); }
    void end(char bracket) override { json.end(bracket); }
    void member(const char* name, const FieldValue& value) override { json.add(name, value); }

    JsonBuilder json;

private:
    RecordTexts& result;
    const bool wants;
    QString lastIndex;
};

RecordTexts recordTexts(const Form& form, const QByteArray& bytes, bool wantsTexts)
{
    RecordTexts result;
    result.isList = isList(form);
    MemorySource source(bytes);
    ByteWindow window(source);
    TextListener listener(result, wantsTexts);
    const Decoding decoding = decode(form, window, listener, FaultList::usualLimit);
    result.json = std::move(listener.json.text);
    const std::vector<Fault>& faults = decoding.faults.listed();
    if (!faults.empty())
        result.fault = Text::tr("byte %1: %2").arg(faults[0].offset).arg(faults[0].text);
    else
        result.rest = static_cast<int>(bytes.size() - decoding.restOffset);
    return result;
}
