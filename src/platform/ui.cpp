#include "platform/ui.h"

namespace adjustacc::platform {

ModalForm::~ModalForm() = default;
Ui::~Ui() = default;

}  // namespace adjustacc::platform
