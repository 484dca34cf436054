#include "platform/datacontrol.h"

#include <memory>
#include <utility>

namespace adjustacc::platform {

Adodc::Adodc(QString name, QObject* parent) : Control(std::move(name), parent) {}

Adodc::~Adodc() {
  // The set may live on with the screen that made it.
  stopWatching();
}

void Adodc::setRecordset(messaging::RecordSetPtr recordset) {
  stopWatching();
  m_recordset = std::move(recordset);
  if (m_recordset) {
    m_watch = m_recordset->watch([this] { Q_EMIT recordsetChanged(); });
  }
  Q_EMIT recordsetReplaced();
}

void Adodc::setRecordset(const messaging::RecordSet& recordset) {
  setRecordset(std::make_shared<messaging::RecordSet>(recordset));
}

void Adodc::refresh() {
  Q_EMIT refreshed();
}

void Adodc::stopWatching() {
  if (m_recordset && m_watch != 0) {
    m_recordset->unwatch(m_watch);
  }
  m_watch = 0;
}

}  // namespace adjustacc::platform
