#pragma once
// A date or time picker (QORVA_DTP, mDtp...). Its value may be empty (no date chosen), which is not
// the same as any date; it keeps within its earliest and latest date.

#include "platform/control.h"

#include <QDate>
#include <QDateTime>
#include <QTime>
#include <QVariant>

namespace adjustacc::platform {

class DatePicker : public Control {
  Q_OBJECT
public:
  enum class Mode { Date, Time };

  explicit DatePicker(QString name, Mode mode = Mode::Date, QObject* parent = nullptr);

  Mode mode() const { return m_mode; }
  void setMode(Mode mode);

  // --- value -------------------------------------------------------------------------------------
  bool isEmpty() const { return !m_value.isValid(); }
  // Date part (date mode) or time part (time mode); invalid when empty.
  QDate date() const { return isEmpty() ? QDate() : m_value.date(); }
  QTime time() const { return isEmpty() ? QTime() : m_value.time(); }
  // Null when empty; a QDate in date mode, a QTime in time mode.
  QVariant value() const;

  // A date outside [minDate, maxDate] or an invalid date is refused (false, value unchanged, logged):
  // the person could not pick it either.
  bool setDate(const QDate& date);
  bool setTime(const QTime& time);
  // Both parts at once (only the part of the mode is shown).
  bool setDateTime(const QDateTime& value);
  // Sets today (date mode) or the current time to the minute (time mode).
  void setToday();
  // Empties the picker.
  void clear();

  // --- limits ------------------------------------------------------------------------------------
  QDate minDate() const { return m_minDate; }
  QDate maxDate() const { return m_maxDate; }
  // Refused (false) when invalid or crossing the other limit. A value outside the new limit is moved
  // onto it, as the picker shows no date it could not offer.
  bool setMinDate(const QDate& date);
  bool setMaxDate(const QDate& date);

  // --- display -----------------------------------------------------------------------------------
  // "Short Date" (mm/dd/yyyy), "Long Date", or a custom pattern in Qt's date/time pattern letters
  // ("hh:mm", "MM/dd/yyyy"). Empty means "Short Date" in date mode and "hh:mm" in time mode.
  QString displayFormat() const { return m_format; }
  void setDisplayFormat(const QString& format);
  // The value as the picker shows it; empty text when empty.
  QString text() const;

  // --- what the view calls --------------------------------------------------------------------------
  // The person picks a date/time (or clears it, with an invalid value); refused when the picker cannot
  // be used or the value is outside the limits. Fires Change.
  bool userSetDateTime(const QDateTime& value);
  bool userClear();

Q_SIGNALS:
  void valueChanged();  // Change

private:
  bool acceptsDate(const QDate& date) const;
  void assign(const QDateTime& value);

  Mode m_mode;
  QDateTime m_value;  // invalid = empty
  QDate m_minDate;
  QDate m_maxDate;
  QString m_format;
};

// The name the screens know it by.
using QORVA_DTP = DatePicker;

}  // namespace adjustacc::platform
