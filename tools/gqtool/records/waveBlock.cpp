#include "waveBlock.h"
#include "shared/text.h"

#include <array>
#include <byte2Rdb.h>
#include <zlib.h>

using gqdb::CByte2Rdb;

static const int leastBlockWithMarks = 96; // bytes; without marks it may be empty

Text markFault(unsigned int markCount, long long size)
{
    const long long need = 4LL * markCount + leastBlockWithMarks;
    if (markCount == 0 || size >= need)
        return {};
    return Text::tr("a wave with marks needs at least %1 bytes of samples: with markCount %2, %3 bytes after the head, "
                    "got %4")
        .arg(leastBlockWithMarks)
        .arg(markCount)
        .arg(need)
        .arg(size);
}

UnpackedBlock unpackBlock(const QByteArray& packed)
{
    UnpackedBlock block;
    z_stream zlib = {};
    zlib.next_in = reinterpret_cast<unsigned char*>(const_cast<char*>(packed.constData())); // zlib does not write to it
    zlib.avail_in = static_cast<unsigned int>(packed.size());
    if (inflateInit(&zlib) != Z_OK) {
        block.fault = Text::tr("zlib is out of memory");
        return block;
    }
    std::array<unsigned char, 65536> part;
    int result = Z_OK;
    while (result == Z_OK && block.bytes.size() <= CByte2Rdb::waveBlockSize) {
        zlib.next_out = part.data();
        zlib.avail_out = part.size();
        result = inflate(&zlib, Z_NO_FLUSH);
        block.bytes.append(reinterpret_cast<const char*>(part.data()), static_cast<int>(part.size() - zlib.avail_out));
    }
    block.used = static_cast<int>(zlib.total_in);
    if (block.bytes.size() > CByte2Rdb::waveBlockSize)
        block.fault = Text::tr("the samples unpack to more than %1 bytes").arg(CByte2Rdb::waveBlockSize);
    else if (result == Z_BUF_ERROR)
        block.fault = Text::tr("the zlib stream ends early, after %1 unpacked bytes").arg(block.bytes.size());
    else if (result != Z_STREAM_END)
        block.fault = Text::tr("the zlib stream is invalid at its byte %1: %2")
                          .arg(block.used)
                          .arg(zlib.msg == nullptr ? Text::tr("it needs a dictionary") : libraryText(zlib.msg));
    inflateEnd(&zlib);
    return block;
}
