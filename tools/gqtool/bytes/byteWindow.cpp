#include "byteWindow.h"
#include "shared/text.h"

static const int largestWindow = 1 << 30; // bytes; a QByteArray holds at most twice as many

ByteWindow::ByteWindow(ByteSource& bytes, bool isAllKept)
    : source(bytes), keepsAll(isAllKept), next(data.constData()), end(next)
{
}

bool ByteWindow::fill(long long count)
{
    while (!hasEnded && end - next < count) {
        auto position = static_cast<int>(next - data.constData());
        if (!areAllKept()) {
            start += position;
            data.remove(0, position);
            position = 0;
        }
        isTooLarge = data.size() >= largestWindow;
        hasEnded = isTooLarge || !source.read(data);
        next = data.constData() + position;
        end = data.constData() + data.size();
    }
    return end - next >= count;
}

QString ByteWindow::error() const
{
    return isTooLarge ? Text::tr("a field or wave has more than %1 bytes").arg(largestWindow) : source.error();
}
