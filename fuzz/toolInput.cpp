#include "toolInput.h"

#include <cstdlib>

#include <sys/mman.h>
#include <unistd.h>

QByteArray InputBytes::take(int count)
{
    QByteArray taken = bytes.mid(pos, count);
    pos += taken.size();
    return taken;
}

const Form& takeForm(InputBytes& input)
{
    const std::vector<Form>& forms = recordForms();
    return forms[static_cast<size_t>(input.number()) % forms.size()];
}

QString inputFile(const QByteArray& content)
{
    static const int file = memfd_create("input", MFD_CLOEXEC);
    static const QString path = "/proc/self/fd/" + QString::number(file);
    const auto size = static_cast<size_t>(content.size());
    require(ftruncate(file, 0) == 0 && pwrite(file, content.constData(), size, 0) == static_cast<ssize_t>(size),
            "the input file must be writable");
    return path;
}

int lineOfError(const QString& error, const QString& path, const QByteArray& text)
{
    const QString prefix = path + ": line ";
    const int line = error.startsWith(prefix) ? std::atoi(error.mid(prefix.size()).toLatin1().constData()) : 0;
    if (line < 1 || line > text.count('\n') + 1)
        fail("the error must have a line of the file: " + error.toStdString());
    return line;
}

void requireNoFault(const std::string& fault)
{
    if (!fault.empty())
        fail(fault);
}

int frameEndAt(const QByteArray& stream, int start)
{
    if (stream.size() - start < 13)
        return 0;
    const unsigned int length = numberOf4(stream.constData() + start + 1);
    return length <= static_cast<unsigned int>(stream.size() - start - 13) ? start + 13 + static_cast<int>(length) : 0;
}

QByteArray word4(int value)
{
    const auto bits = static_cast<unsigned int>(value);
    QByteArray bytes;
    for (const int shift : {0, 8, 16, 24})
        bytes += static_cast<char>(bits >> shift);
    return bytes;
}

QByteArray frameOf(int command, int sequence, const QByteArray& payload)
{
    return '\x68' + word4(payload.size()) + word4(sequence).left(2) + QByteArray(2, '\0') + static_cast<char>(command) +
           payload + QByteArray(2, '\0') + '\x16';
}
