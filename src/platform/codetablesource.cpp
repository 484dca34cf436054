#include "codetablesource.h"

namespace adjustacc::platform {

CodeTableSource::~CodeTableSource() = default;

}  // namespace adjustacc::platform
