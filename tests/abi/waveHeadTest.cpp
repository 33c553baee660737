// The head of a stored wave, on every machine: its 96 bytes are stored as they are in memory.

#include "rdbRecords.h"

#include <cstddef>
#include <type_traits>

using namespace gqdb;

#define AT(record, field, position)                                                                                    \
    static_assert(offsetof(record, field) == (position), #record "::" #field " has moved")

static_assert(std::is_trivially_copyable_v<BlobWaveHead>);
static_assert(sizeof(BlobWaveHead) == 96);
AT(BlobWaveHead, headByte, 0);
AT(BlobWaveHead, waveFlags, 1);
AT(BlobWaveHead, headFill1, 2);
AT(BlobWaveHead, limitHigh, 32);
AT(BlobWaveHead, limitLow, 40);
AT(BlobWaveHead, sampleCount, 48);
AT(BlobWaveHead, markCount, 52);
AT(BlobWaveHead, headFill2, 56);
