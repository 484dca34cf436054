#include "codelookup.h"

namespace adjustacc::platform {

CodeLookup::~CodeLookup() = default;

}  // namespace adjustacc::platform
