#include "byte2Fep.h"

namespace gqdb {

CByte2Fep::CByte2Fep() = default;

CByte2Fep::~CByte2Fep() = default;

} // namespace gqdb
