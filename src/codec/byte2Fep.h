#pragma once

#include "byte2Val.h"

namespace gqdb {

// What the codec of the front-end processors' records stands on; it has no operation yet.
class GQLIB_EXPORT CByte2Fep : public CByte2Val {
public:
    CByte2Fep();
    ~CByte2Fep();
};

} // namespace gqdb
