#include "gqtool/encode/documentEncoder.h"

#include "support/decodeAgreement.h"
#include "toolInput.h"

// gqtool encode.

struct Encoded {
    QStringList errors;
    QByteArray bytes;

    bool operator==(const Encoded& other) const { return errors == other.errors && bytes == other.bytes; }
};

static Encoded encode(const QByteArray& text, int pieceSize)
{
    MemorySource source(text, pieceSize);
    DocumentEncoder encoder(20);
    const QString syntaxError = readDocument(source, encoder);
    if (syntaxError.isEmpty())
        encoder.end();
    else
        encoder.fail({syntaxError});
    Encoded encoded = {encoder.errors(), {}};
    QString error;
    if (encoded.errors.isEmpty())
        encoder.printAll([&](const QByteArray& bytes) { encoded.bytes += bytes; }, error);
    require(error.isEmpty(), "the bytes must be kept");
    return encoded;
}

static bool isSameNumber(const Json& one, const Json& other)
{
    return one == other || one.get<float>() == other.get<float>(); // a float may be written in many ways
}

// The numbers and texts of a document are those of its bytes.
static void requireSameValue(const Json& written, const Json& decoded)
{
    if (written.is_object() && written.contains("hex") && decoded.is_object()) {
        QByteArray bytes;
        QByteArray decodedBytes;
        require(takeBytes(written, bytes) && takeBytes(decoded, decodedBytes) && bytes == decodedBytes,
                "bytes must be decoded as the same bytes, perhaps with other digits");
    } else if (written.is_object() && decoded.is_object()) {
        for (const auto& [name, value] : decoded.items()) {
            if (written.contains(name))
                requireSameValue(written[name], value);
        }
    } else if (written.is_array() && decoded.is_array()) {
        require(written.size() == decoded.size(), "an array must keep its items");
        for (size_t i = 0; i < written.size(); ++i)
            requireSameValue(written[i], decoded[i]);
    } else if (written.is_number() && decoded.is_number() && !isSameNumber(written, decoded)) {
        fail("the number " + written.dump() + " is decoded as " + decoded.dump());
    } else if (written.is_string() && decoded.is_string() && written != decoded) {
        fail("the text " + written.dump() + " is decoded as " + decoded.dump());
    }
}

// The value of the bytes encodes to the same bytes.
static void requireDecodedAgain(const Json& document, const QByteArray& bytes)
{
    const std::string name = document["as"].get<std::string>();
    const Form* form = findForm(QString::fromStdString(name));
    QByteArray behind;
    takeBytes(document.value("behind", Json("")), behind);
    require(bytes.endsWith(behind), "the bytes after the record must be the last ones");
    Json again = {{"as", name}};
    if (form == nullptr) {
        again["value"] = Json::parse(decodeFramePieces(bytes, {}, INT_MAX).value);
    } else {
        if (form->name == std::string("wave"))
            return; // its samples are packed to other bytes
        again["value"] = Json::parse(decodeBytes(*form, bytes).value);
        again["behind"] = document.value("behind", Json(""));
        requireSameValue(document["value"], again["value"]);
    }
    const Encoded encoded = encode(QByteArray::fromStdString(again.dump()), 4096);
    if (encoded.bytes != bytes)
        fail("decoded and encoded again it is " + encoded.bytes.toHex(' ').toStdString() + ", must be " +
             bytes.toHex(' ').toStdString() + "; " + encoded.errors.join("; ").toStdString());
}

static void readText(Reading& reading)
{
    InputBytes input(reading);
    const int pieceSize = input.number() + 1;
    const QByteArray text = input.rest();
    const Encoded encoded = encode(text, std::max<int>(text.size(), 1));
    require(encode(text, pieceSize) == encoded, "the pieces of the text must not matter");
    const Json document = Json::parse(text.begin(), text.end(), nullptr, false);
    if (!encoded.errors.isEmpty())
        return;
    require(document.is_object() && document.contains("as") && document.contains("value"),
            "only a JSON object with as and value must be encoded");
    require(!text.contains('\0'), "a text with a zero byte must be refused");
    Json valueFirst = {{"value", document["value"]}};
    valueFirst.update(document);
    require(encode(QByteArray::fromStdString(valueFirst.dump()), 4096) == encoded,
            "the order of the members must not matter");
    requireDecodedAgain(document, encoded.bytes);
}

// --- Documents of decoded records ---------------------------------------------------------------------------------

enum class Change { none, textBehind, unknownMember, memberTwice };

// The bytes are a record. Its document must be encoded, unless it has an unknown member or its value twice.
static void readDecoded(Reading& reading)
{
    InputBytes input(reading);
    const Form& form = takeForm(input);
    const int pieceSize = input.number() + 1;
    const auto change = Change(pieceSize % 4); // not a byte of its own, so that seeds of decodeRecord fit
    const Decoded decoded = decodeBytes(form, input.rest());
    if (!decoded.faults.empty())
        return;
    const std::unique_ptr<Content> content = form.make();
    QByteArray expected;
    const QStringList refused = takeJson(Json::parse(decoded.value), *content);
    require(std::all_of(refused.begin(), refused.end(), isNotUtf8), "decoded fields must be taken");
    bool isGood = refused.isEmpty() && content->write(expected);
    std::string text = "{\"as\": \"" + std::string(form.name) + "\", \"value\": " + decoded.value;
    if (change == Change::textBehind) {
        text += ", \"behind\": \"text\"";
        expected += "text";
    } else if (change != Change::none) {
        text += change == Change::unknownMember ? ", \"other\": 1" : ", \"value\": " + decoded.value;
        isGood = false;
    }
    const Encoded encoded = encode(QByteArray::fromStdString(text + '}'), pieceSize);
    if (encoded.errors.isEmpty() != isGood)
        fail(text + (isGood ? " must be encoded: " + encoded.errors.join("; ").toStdString() : " must be an error"));
    if (isGood && encoded.bytes != expected)
        fail(text + " is encoded as " + encoded.bytes.toHex(' ').toStdString());
}

const std::vector<Target> documentEncoderTargets = {
    toolTarget("encodeText", readText),
    toolTarget("encodeDocument", readDecoded),
};
