#include "outputFile.h"

#include "shared/console.h"
#include "shared/text.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

OutputFile::OutputFile(const QString& name) : path(name)
{
    const QFileInfo existing(path);
    if (path == "-")
        return;
    if (existing.exists() && !existing.isFile())
        file = std::make_unique<QFile>(path); // a device or pipe, which cannot be replaced
    else
        file = std::make_unique<QSaveFile>(path);
}

bool OutputFile::open()
{
    return file == nullptr || check(file->open(QIODevice::WriteOnly));
}

void OutputFile::add(const QByteArray& bytes)
{
    if (file == nullptr)
        printBytes(bytes);
    else
        isGood = isGood && file->write(bytes) == bytes.size();
}

bool OutputFile::end()
{
    if (file == nullptr)
        return true;
    auto* saved = qobject_cast<QSaveFile*>(file.get());
    return check(isGood && (saved == nullptr ? file->flush() : saved->commit()));
}

bool OutputFile::discard()
{
    if (file != nullptr)
        printError(Text::tr("%1 is not written").arg(path));
    return false;
}

bool OutputFile::check(bool isDone)
{
    isGood = isGood && isDone;
    if (!isGood)
        printError(Text::tr("cannot write to %1: %2").arg(path, libraryText(file->errorString())));
    return isGood;
}
