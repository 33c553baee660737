#include "captureFile.h"

#include "shared/console.h"
#include "shared/text.h"

#include <QFile>
#include <QFileInfo>

#include <pcap/pcap.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

static const int largestPacket = 65535;

CaptureFile::~CaptureFile()
{
    if (dumper != nullptr)
        pcap_dump_close(dumper);
}

// Returns a capture without packets on `path`, opened in a mode of fopen(), or null, with errno.
static pcap_dumper_t* begin(const QByteArray& path, const char* mode)
{
    std::FILE* stream = std::fopen(path.constData(), mode);
    if (stream == nullptr)
        return nullptr;
    pcap_t* format = pcap_open_dead(DLT_RAW, largestPacket);
    pcap_dumper_t* dumper = pcap_dump_fopen(format, stream);
    if (dumper != nullptr && pcap_dump_flush(dumper) != 0) {
        const int error = errno;
        pcap_dump_close(dumper);
        dumper = nullptr;
        errno = error;
    }
    pcap_close(format);
    return dumper;
}

bool CaptureFile::open(const QString& path, QString& error)
{
    const QFileInfo existing(path);
    const bool isPipeOrDevice = existing.exists() && !existing.isFile();
    name = path;
    const QByteArray target = QFile::encodeName(existing.exists() ? existing.canonicalFilePath() : path);
    const QByteArray begun = isPipeOrDevice ? target : target + ".part"; // until it can take the place of the old file
    dumper = begin(begun, isPipeOrDevice ? "wbe" : "wbex");
    if (dumper != nullptr && (isPipeOrDevice || std::rename(begun.constData(), target.constData()) == 0)) {
        size = pcap_dump_ftell64(dumper);
        return true;
    }
    const int failure = errno;
    error = errorText(failure);
    if (failure == EEXIST)
        error = Text::tr("%1 exists; if no other trace is writing it, remove it").arg(QFile::decodeName(begun));
    else if (!isPipeOrDevice)
        unlink(begun.constData());
    return false;
}

void CaptureFile::write(const QByteArray& packet)
{
    if (dumper == nullptr)
        return;
    pcap_pkthdr head = {};
    gettimeofday(&head.ts, nullptr);
    head.caplen = head.len = static_cast<bpf_u_int32>(packet.size());
    pcap_dump(reinterpret_cast<u_char*>(dumper), &head, reinterpret_cast<const u_char*>(packet.constData()));
    if (pcap_dump_flush(dumper) != 0 || std::ferror(pcap_dump_file(dumper)) != 0)
        fail(errno);
    else
        size = pcap_dump_ftell64(dumper);
}

void CaptureFile::fail(int error)
{
    hasFailed = true;
    pcap_dump_close(dumper);
    dumper = nullptr;
    if (size > 0) // -1 for a pipe
        QFile::resize(name, size);
    printError(Text::tr("cannot write to %1, the trace continues without it: %2").arg(name, errorText(error)));
}
