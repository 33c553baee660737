#include "byte2Rdb.h"

namespace gqdb {

CByte2Rdb::CByte2Rdb() = default;

CByte2Rdb::~CByte2Rdb() = default;

} // namespace gqdb
