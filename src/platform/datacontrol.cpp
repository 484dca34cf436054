#include "platform/datacontrol.h"

#include <memory>
#include <utility>

namespace adjustacc::platform {

Adodc::Adodc(QString name, QObject* parent) : Control(std::move(name), parent) {}

void Adodc::setRecordset(messaging::RecordSetPtr recordset) {
  m_recordset = std::move(recordset);
  Q_EMIT recordsetReplaced();
}

void Adodc::setRecordset(const messaging::RecordSet& recordset) {
  setRecordset(std::make_shared<messaging::RecordSet>(recordset));
}

void Adodc::refresh() {
  Q_EMIT refreshed();
}

}  // namespace adjustacc::platform
