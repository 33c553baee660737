#include "spool.h"
#include "shared/text.h"

static const int mostInMemory = 1 << 24;
static const int pieceBytes = 1 << 16;

void Spool::add(std::string_view bytes)
{
    memory.append(bytes.data(), static_cast<int>(bytes.size()));
    size += static_cast<long long>(bytes.size());
    if (memory.size() < mostInMemory)
        return;
    isBroken = isBroken || !(file.isOpen() || file.open()) || file.write(memory) != memory.size();
    memory.resize(0);
}

bool Spool::printAll(const std::function<void(const QByteArray& bytes)>& print, QString& error)
{
    if (file.isOpen()) {
        isBroken = isBroken || !file.seek(0);
        for (QByteArray piece = file.read(pieceBytes); !isBroken && !piece.isEmpty(); piece = file.read(pieceBytes))
            print(piece);
        isBroken = isBroken || file.error() != QFileDevice::NoError;
    }
    if (isBroken)
        error = Text::tr("cannot keep %1 bytes in a temporary file: %2").arg(size).arg(libraryText(file.errorString()));
    else
        print(memory);
    return !isBroken;
}
