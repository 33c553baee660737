#pragma once

#include <QByteArray>

// Returns true if an array has capacity that QByteArray::reserve() marked: clearing bytes keeps it.
inline bool isReserved(QByteArray& data)
{
#if QT_VERSION_MAJOR == 5
    return data.data_ptr()->capacityReserved;
#else
    return data.data_ptr().flags() & QArrayData::CapacityReserved;
#endif
}
