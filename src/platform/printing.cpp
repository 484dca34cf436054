#include "printing.h"

namespace adjustacc::platform {

PrintComponent::~PrintComponent() = default;
PrintComponentFactory::~PrintComponentFactory() = default;
TemplateLookup::~TemplateLookup() = default;

}  // namespace adjustacc::platform
