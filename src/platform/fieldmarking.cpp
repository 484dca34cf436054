#include "fieldmarking.h"

#include "control.h"

namespace adjustacc::platform {

void FieldMarking::markError(Control& control) const { control.setBackColor(m_errorColor); }

void FieldMarking::restore(Control& control) const { control.setBackColor(QColor()); }

bool FieldMarking::isMarked(const Control& control) const { return control.backColor() == m_errorColor; }

}  // namespace adjustacc::platform
