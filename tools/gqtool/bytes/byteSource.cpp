#include "byteSource.h"
#include "shared/text.h"

#include <QFile>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

MemorySource::MemorySource(QByteArray bytes, int size) : content(std::move(bytes)), pieceSize(size) {}

bool MemorySource::read(QByteArray& bytes)
{
    const int count = std::min(pieceSize, static_cast<int>(content.size()) - pos);
    bytes.append(content.constData() + pos, count);
    pos += count;
    return count > 0;
}

FileSource::FileSource(QString file)
    : path(std::move(file)),
      descriptor(path == "-" ? STDIN_FILENO : open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC)),
      failure(descriptor < 0 ? errno : 0)
{
}

FileSource::~FileSource()
{
    if (descriptor > STDIN_FILENO)
        close(descriptor);
}

bool FileSource::read(QByteArray& bytes)
{
    if (failure != 0)
        return false;
    beforeRead(isReady());
    ssize_t got;
    do
        got = ::read(descriptor, piece.data(), piece.size());
    while (got < 0 && errno == EINTR);
    failure = got < 0 ? errno : 0;
    bytes.append(piece.data(), static_cast<int>(std::max<ssize_t>(got, 0)));
    count += std::max<ssize_t>(got, 0);
    return got > 0;
}

QString FileSource::reason() const
{
    return failure == 0 ? QString() : errorText(failure);
}

QString FileSource::error() const
{
    return failure == 0 ? QString() : Text::tr("cannot read %1: %2").arg(name(), reason());
}

bool FileSource::isReady() const
{
    pollfd waiting = {descriptor, POLLIN, 0};
    return poll(&waiting, 1, 0) != 0;
}

long long FileSource::total() const
{
    struct stat status = {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) ? status.st_size : 0;
}
