#include "compactJson.h"
#include "text.h"

#include <QString>

QByteArray compactJson(const QJsonDocument& document)
{
    QString escaped;
    for (const QChar character : QString::fromUtf8(document.toJson(QJsonDocument::Compact))) {
        if (character.category() == QChar::Other_Control || isDirectionControl(character))
            escaped += QString("\\u%1").arg(character.unicode(), 4, 16, QChar('0'));
        else
            escaped += character;
    }
    return escaped.toUtf8();
}
