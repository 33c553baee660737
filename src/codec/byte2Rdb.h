#pragma once

#include "byte2Val.h"

namespace gqdb {

// Byte forms of the records of the real-time database. Static and stateless like its base.
class GQLIB_EXPORT CByte2Rdb : public CByte2Val {
public:
    CByte2Rdb();
    ~CByte2Rdb();
};

} // namespace gqdb
