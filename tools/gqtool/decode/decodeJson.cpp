#include "decodeJson.h"

#include "shared/console.h"

static const size_t blockBytes = 1 << 16; // that are printed at a time

DecodeJson::DecodeJson(const QString& form, const FrameSource* source, const ByteWindow& bytes, Members wanted)
    : input(bytes), wants(wanted)
{
    json.begin(nullptr, '{');
    json.add("as", form.toStdString());
    if (source == nullptr)
        return;
    json.add("transport", source->isUdp ? "udp" : "tcp");
    json.add("direction", source->isRequest ? "request" : "reply");
    if (!source->form.isEmpty())
        json.add("form", source->form.toStdString());
}

// --- The value ----------------------------------------------------------------------------------------------------

void DecodeJson::begin(const char* name, char bracket)
{
    json.begin(depth == 0 ? "value" : name, bracket);
    ++depth;
    hasValue = true;
}

void DecodeJson::end(char bracket)
{
    json.end(bracket);
    --depth;
    flushFull();
}

void DecodeJson::member(const char* name, const FieldValue& value)
{
    json.add(name, value);
    flushFull();
}

void DecodeJson::flush()
{
    printBytes(QByteArray::fromRawData(json.text.data(), static_cast<int>(json.text.size())));
    json.text.clear();
}

void DecodeJson::flushFull()
{
    if (json.text.size() > blockBytes)
        flush();
}

// --- The other members --------------------------------------------------------------------------------------------

void DecodeJson::row(const DecodedRow& row)
{
    if (!wants.fields && input.isLarge())
        return;
    std::string name;
    row.appendName(name);
    const auto* text = std::get_if<JsonText>(&row.value);
    const bool isValue = text == nullptr || !text->text.empty();
    field.begin(nullptr, '{');
    field.add("offset", row.offset < 0 ? FieldValue(JsonText{"null"}) : row.offset);
    field.add("bytes", QByteArray(row.bytes.data(), static_cast<int>(row.bytes.size())).toHex().toStdString());
    field.add("name", name);
    field.add("value", isValue ? row.value : JsonText{"null"});
    field.end('}');
    fields.add(field.text);
    field.text.clear();
}

void DecodeJson::rest(const QByteArray& bytes)
{
    behind += bytes;
    if (!isBehindHex && behind.size() > ByteWindow::smallInput) {
        json.begin("behind", '{');
        json.add("hex", JsonText{"\""});
        isBehindHex = true;
    }
    if (isBehindHex) {
        json.text += behind.toHex().toStdString();
        behind.resize(0);
        flushFull();
    }
}

void DecodeJson::endRest()
{
    if (isBehindHex) {
        json.text += '"';
        json.end('}');
    } else if (!behind.isEmpty()) {
        json.add("behind", behind.toStdString());
    }
}

bool DecodeJson::addFields()
{
    json.begin("fields", '[');
    flush();
    QString error;
    if (!fields.printAll(printBytes, error)) {
        printError(error);
        return false;
    }
    json.end(']');
    return true;
}

void DecodeJson::addFaults(const FaultList& faults)
{
    json.begin("faults", '[');
    for (const Fault& fault : faults.listed()) {
        json.begin(nullptr, '{');
        json.add("offset", fault.offset);
        json.add("fault", JsonText{jsonText(fault.text.english())});
        json.end('}');
    }
    json.end(']');
    if (faults.others() > 0)
        json.add("moreFaults", faults.others());
}

bool DecodeJson::finish(const Decoding& decoding)
{
    if (!hasValue) // a list whose count is incomplete
        json.add("value", JsonText{"null"});
    endRest();
    if ((wants.fields || !input.isLarge()) && !addFields())
        return false;
    addFaults(decoding.faults);
    if (wants.library || !input.isLarge()) {
        json.begin("library", '{');
        json.add("result", decoding.readerCalled ? FieldValue(decoding.result) : JsonText{"null"});
        json.add("meaning", JsonText{jsonText(decoding.meaning.english())});
        json.end('}');
    }
    json.end('}');
    json.text += '\n';
    flush();
    return true;
}
