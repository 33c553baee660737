#include "spool.h"
#include "shared/text.h"
#include "writeError.h"

#include <cerrno>

static const int mostInMemory = 1 << 24;
static const int pieceBytes = 1 << 16;

void Spool::add(std::string_view bytes)
{
    memory.append(bytes.data(), static_cast<int>(bytes.size()));
    size += static_cast<long long>(bytes.size());
    if (memory.size() < mostInMemory)
        return;
    errno = 0;
    if (!isBroken)
        check((file.isOpen() || file.open()) && file.write(memory) == memory.size());
    memory.resize(0);
}

bool Spool::printAll(const std::function<void(const QByteArray& bytes)>& print, QString& error)
{
    if (file.isOpen()) {
        errno = 0;
        if (!isBroken)
            check(file.seek(0));
        for (QByteArray piece = file.read(pieceBytes); !isBroken && !piece.isEmpty(); piece = file.read(pieceBytes))
            print(piece);
        if (!isBroken)
            check(file.error() == QFileDevice::NoError);
    }
    if (isBroken)
        error = Text::tr("cannot keep %1 bytes in a temporary file: %2").arg(size).arg(fileError);
    else
        print(memory);
    return !isBroken;
}

// Keeps the reason of the first failure: what the file does next replaces it.
void Spool::check(bool isDone)
{
    isBroken = !isDone;
    if (isBroken)
        fileError = writeErrorText(file);
}
