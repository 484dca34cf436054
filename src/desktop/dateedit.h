#pragma once
// A date (or time) editor that can be empty: the date pickers of the screens hold "no date" as a state of its
// own, which a plain QDateTimeEdit cannot show.
//
// Empty is shown as a blank box (the editor's minimum is one step below the earliest date the picker offers,
// and that minimum displays as blank). The person empties the box with Delete or the context menu's "Clear
// Date"; typing a digit, stepping with the arrow keys or opening the calendar in an empty box starts from
// today (or the current time), within the limits.

#include <QDate>
#include <QDateTime>
#include <QDateTimeEdit>
#include <QString>

namespace adjustacc::desktop {

class DateEdit : public QDateTimeEdit {
  Q_OBJECT
public:
  enum class Mode { Date, Time };

  explicit DateEdit(QWidget* parent = nullptr);

  Mode mode() const { return m_mode; }
  void setMode(Mode mode);
  // Qt date/time pattern ("MM/dd/yyyy", "hh:mm").
  void setPattern(const QString& pattern);
  // Earliest and latest date the person may pick (date mode).
  void setLimits(const QDate& earliest, const QDate& latest);

  bool isEmpty() const;
  // The shown value; invalid when empty. In time mode only the time part means anything.
  QDateTime value() const;
  // Shows a value (an invalid one empties the box) without reporting it as the person's edit.
  void showValue(const QDateTime& value);
  // The person empties the box (Delete, context menu); reported through valueEdited.
  void clearByUser();

  // The text a person sees; blank when empty.
  QString shownText() const;

Q_SIGNALS:
  // The person changed the value; invalid when the person emptied the box.
  void valueEdited(const QDateTime& value);

protected:
  void keyPressEvent(QKeyEvent* event) override;
  void stepBy(int steps) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

private:
  QDateTime emptyMarker() const;
  QDateTime startingValue() const;
  void applyRange();
  void startFromNow();
  void onChanged(const QDateTime& value);

  Mode m_mode = Mode::Date;
  QDate m_earliest{1601, 1, 1};
  QDate m_latest{9999, 12, 31};
  bool m_showing = false;  // a value is being shown, not edited
};

}  // namespace adjustacc::desktop
