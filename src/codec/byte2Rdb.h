#pragma once

#include "byte2Val.h"

namespace gqdb {

// What the codec of the database records stands on; it has no operation yet.
class GQLIB_EXPORT CByte2Rdb : public CByte2Val {
public:
    CByte2Rdb();
    ~CByte2Rdb();
};

} // namespace gqdb
