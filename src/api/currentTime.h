#pragma once

#include <QDateTime>

namespace gqdb {

// Returns the seconds since 1970, the payload of three ready-made commands. Internal.
inline int currentTime()
{
    return static_cast<int>(QDateTime::currentSecsSinceEpoch());
}

} // namespace gqdb
