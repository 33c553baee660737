#include "readAll.h"

#include "shared/text.h"

bool readAll(ByteSource& source, QByteArray& content, int most)
{
    while (content.size() <= most && source.read(content)) {
    }
    return content.size() <= most;
}

QString tooLargeText(int most)
{
    return Text::tr("more than %1 bytes").arg(most);
}

bool readAll(const QString& path, QByteArray& content, QString& error, int most)
{
    FileSource file(path);
    error = readAll(file, content, most) ? file.reason() : tooLargeText(most);
    return error.isEmpty();
}
