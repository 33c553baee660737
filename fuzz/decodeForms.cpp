#include "support/decodeAgreement.h"
#include "toolInput.h"

// gqtool decode: records and frames while their bytes arrive, against the library's readers.

// Leaves out waves: their samples are packed to other bytes, and a head may contradict its samples.
static void requireEncodedAgain(const Form& form, const Decoded& decoded, const QByteArray& bytes)
{
    if (form.name == std::string("wave"))
        return;
    const std::unique_ptr<Content> content = form.make();
    const QStringList errors = takeJson(Json::parse(decoded.value), *content);
    if (!errors.isEmpty())
        return; // texts that are not UTF-8: recordIn() has looked at them
    QByteArray written;
    require(content->write(written), "what was decoded must be written");
    const Decoded again = decodeBytes(form, written + QByteArray(100, '\0'));
    if (again.value != jsonOf(*content))
        fail("encoded and decoded again it is " + again.value + ", must be " + jsonOf(*content));
    const QByteArray used = bytes.left(static_cast<int>(decoded.restOffset));
    if (written != used && decodeBytes(form, used).value != again.value)
        fail("encoded again it is " + written.toHex(' ').toStdString());
}

static void readRecord(Reading& reading)
{
    InputBytes input(reading);
    const Form& form = takeForm(input);
    const int pieceSize = input.number() + 1;
    const QByteArray bytes = input.rest();
    Agreement agreement;
    const Decoded decoded = decodeAgreed(form, bytes, agreement, pieceSize);
    requireNoFault(agreement.fault);
    require(decoded.restOffset >= 0 && decoded.restOffset + decoded.rest.size() == bytes.size(),
            "what follows the record must be the rest");
    require(decoded.rest == bytes.mid(static_cast<int>(decoded.restOffset)), "the rest must be bytes of the input");
    for (const DecodedField& field : decoded.fields) {
        if (field.offset >= 0)
            require(field.bytes == bytes.mid(static_cast<int>(field.offset), field.bytes.size()),
                    "the bytes of a field must be those of the input");
    }
    const Decoded few = decodePieces(form, bytes, pieceSize, 1);
    require(few.faults.size() == std::min<size_t>(decoded.faults.size(), 1), "at most one fault must be listed");
    if (decoded.faults.empty())
        requireEncodedAgain(form, decoded, bytes);
}

static const CommandMap& fuzzMap()
{
    static const CommandMap map = [] {
        CommandMap made;
        QByteArray text = "0x16 ints ints ints\n0x20 texts hex strings\n";
        int number = 0x30; // of the records
        for (const Form& form : recordForms()) {
            text += QByteArray::number(number) + " n" + QByteArray::number(number) + " - bytes:" + form.name + "\n";
            ++number;
        }
        requireNoFault(made.add(text).join('\n').toStdString());
        return made;
    }();
    return map;
}

static void readFrames(Reading& reading)
{
    InputBytes input(reading);
    const char* const forms[] = {"", "int", "ints", "bytes", "strings"};
    const int flags = input.number();
    const FrameSource source = {(flags & 1) != 0, (flags & 2) != 0, forms[input.number(5)],
                                (flags & 4) != 0 ? &fuzzMap() : nullptr};
    const int pieceSize = input.number() + 1;
    const QByteArray bytes = input.rest();
    Agreement agreement;
    const Decoded decoded = decodeFramesAgreed(bytes, source, agreement, pieceSize);
    const QByteArray encoded = encodedParts(decoded.value, agreement);
    requireNoFault(agreement.fault);
    require(encoded == bytes, "the parts must be all bytes again");
    require(decoded.restOffset == bytes.size() && decoded.rest.isEmpty(), "nothing must be left over");
}

const std::vector<Target> decodeTargets = {
    toolTarget("decodeRecord", readRecord),
    toolTarget("decodeFrames", readFrames),
};
