#pragma once
// The data control (mAdodc..., Adodc1): holds the record set that a grid is bound to. Replacing the
// record set rebinds every grid that uses this data control; refresh() redraws them.

#include "messaging/recordset.h"
#include "platform/control.h"

namespace adjustacc::platform {

class Adodc : public Control {
  Q_OBJECT
public:
  explicit Adodc(QString name, QObject* parent = nullptr);

  // May be null (nothing bound: the grids show no rows).
  const messaging::RecordSetPtr& recordset() const { return m_recordset; }
  void setRecordset(messaging::RecordSetPtr recordset);
  // Convenience: binds a copy of the given set (copies share row storage until written).
  void setRecordset(const messaging::RecordSet& recordset);
  // Releases the record set (Set .Recordset = Nothing).
  void clearRecordset() { setRecordset(messaging::RecordSetPtr()); }

  // The record set's rows, values, sort or filter were changed by the screen: bound grids re-read.
  void refresh();

Q_SIGNALS:
  void recordsetReplaced();
  void refreshed();

private:
  messaging::RecordSetPtr m_recordset;
};

}  // namespace adjustacc::platform
