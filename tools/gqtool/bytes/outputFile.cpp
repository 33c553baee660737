#include "outputFile.h"
#include "writeError.h"

#include "shared/console.h"
#include "shared/text.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cerrno>

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
    errno = 0;
    return file == nullptr || check(file->open(QIODevice::WriteOnly)) || fail();
}

void OutputFile::add(const QByteArray& bytes)
{
    if (file == nullptr)
        printBytes(bytes);
    else if (isGood) {
        errno = 0;
        check(file->write(bytes) == bytes.size());
    }
}

bool OutputFile::end()
{
    if (file == nullptr)
        return true;
    auto* saved = qobject_cast<QSaveFile*>(file.get());
    errno = 0;
    return (isGood && check(saved == nullptr ? file->flush() : saved->commit())) || fail();
}

bool OutputFile::discard()
{
    if (file != nullptr)
        printError(Text::tr("%1 is not written").arg(path));
    return false;
}

// Keeps the reason of the first failure: what the file does next replaces it.
bool OutputFile::check(bool isDone)
{
    isGood = isDone;
    if (!isGood)
        error = writeErrorText(*file);
    return isGood;
}

bool OutputFile::fail() const
{
    printError(Text::tr("cannot write to %1: %2").arg(path, error));
    return false;
}
