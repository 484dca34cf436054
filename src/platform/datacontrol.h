#pragma once
// The data control (mAdodc..., Adodc1): holds the record set that a grid is bound to. Replacing the
// record set rebinds every grid that uses this data control; refresh() redraws them. Whatever the screen
// changes in the set itself (rows, values, sort, filter, closing it) is passed on as recordsetChanged(), so
// bound grids follow the set without asking it.

#include "messaging/recordset.h"
#include "platform/control.h"

namespace adjustacc::platform {

class Adodc : public Control {
  Q_OBJECT
public:
  explicit Adodc(QString name, QObject* parent = nullptr);
  ~Adodc() override;

  // May be null (nothing bound: the grids show no rows).
  const messaging::RecordSetPtr& recordset() const { return m_recordset; }
  void setRecordset(messaging::RecordSetPtr recordset);
  // Convenience: binds a copy of the given set (copies share row storage until written).
  void setRecordset(const messaging::RecordSet& recordset);
  // Releases the record set (Set .Recordset = Nothing).
  void clearRecordset() { setRecordset(messaging::RecordSetPtr()); }

  // The screen asks the bound grids to read everything again (Refresh).
  void refresh();

Q_SIGNALS:
  void recordsetReplaced();
  void refreshed();
  // The held set's rows, values, sort or filter changed (its cursor moving is no change).
  void recordsetChanged();

private:
  void stopWatching();

  messaging::RecordSetPtr m_recordset;
  messaging::RecordSet::WatchId m_watch = 0;
};

}  // namespace adjustacc::platform
