#include "recordTexts.h"

#include "recordDecoding.h"

// Takes the index off a name: "[2].text1" becomes "text1". Returns "[2]", or nothing if the name has no index.
static QString takeIndex(QString& name)
{
    const int end = name.startsWith('[') ? name.indexOf(']') + 1 : 0;
    QString index = name.left(end);
    name.remove(0, name.mid(end).startsWith('.') ? end + 1 : end);
    return index;
}

RecordTexts recordTexts(const Form& form, const QByteArray& bytes)
{
    const Decoded decoded = decode(form, bytes);
    RecordTexts result;
    result.json = decoded.value;
    result.isList = result.json.startsWith('[');
    QString lastIndex;
    for (const DecodedField& field : decoded.fields) {
        QString name = field.name;
        const QString index = result.isList ? takeIndex(name) : QString();
        if (result.isList && index.isEmpty())
            continue; // the count
        const QString text = field.value.isEmpty() ? name : name + ' ' + field.value;
        if (result.isList && index == lastIndex)
            result.texts.last() += ", " + text;
        else
            result.texts.append(text);
        lastIndex = index;
    }
    if (!decoded.faults.empty())
        result.fault = QString("byte %1: %2").arg(decoded.faults[0].offset).arg(decoded.faults[0].text);
    else
        result.rest = decoded.rest.size();
    return result;
}
