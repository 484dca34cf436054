#include "hostlink.h"

namespace adjustacc::messaging {

HostLink::~HostLink() = default;

}  // namespace adjustacc::messaging
