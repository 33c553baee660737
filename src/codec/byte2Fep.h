#pragma once

#include "byte2Val.h"

namespace gqdb {

// Byte forms of the records of the front-end processors. Static and stateless like its base.
class GQLIB_EXPORT CByte2Fep : public CByte2Val {
public:
    CByte2Fep();
    ~CByte2Fep();
};

} // namespace gqdb
