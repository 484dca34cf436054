#include "documenthost.h"

namespace adjustacc::document {

DocumentContainer::~DocumentContainer() = default;
ToolbarHost::~ToolbarHost() = default;
DocumentHost::~DocumentHost() = default;

}  // namespace adjustacc::document
