#include "writeError.h"

#include <cerrno>

Text writeErrorText(const QFileDevice& file)
{
    const int error = errno;
    const QString reason = file.errorString();
    return reason == "Unknown error" && error != 0 ? errorText(error) : libraryText(reason);
}
