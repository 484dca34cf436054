#include "dateedit.h"

#include <QCalendarWidget>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>

#include <utility>

namespace adjustacc::desktop {

namespace {

// In time mode the date part is fixed: the value lives on this day, the empty marker on the day before, so no
// stepping of the hour or minute can reach the marker.
const QDate kTimeDay(2000, 1, 2);

}  // namespace

DateEdit::DateEdit(QWidget* parent) : QDateTimeEdit(parent) {
  // A single blank: an empty special text would switch the special display off.
  setSpecialValueText(QStringLiteral(" "));
  setKeyboardTracking(true);
  setMode(Mode::Date);
  connect(this, &QDateTimeEdit::dateTimeChanged, this, &DateEdit::onChanged);
}

void DateEdit::setMode(Mode mode) {
  const bool wasEmpty = isEmpty();
  const QDateTime before = value();
  m_mode = mode;
  setCalendarPopup(mode == Mode::Date);
  if (mode == Mode::Date) {
    setPattern(QStringLiteral("MM/dd/yyyy"));
  } else {
    setPattern(QStringLiteral("hh:mm"));
  }
  applyRange();
  showValue(wasEmpty ? QDateTime() : before);
  if (QCalendarWidget* calendar = calendarPopup() ? calendarWidget() : nullptr) {
    calendar->installEventFilter(this);
  }
}

void DateEdit::setPattern(const QString& pattern) {
  const bool wasShowing = std::exchange(m_showing, true);
  setDisplayFormat(pattern);
  m_showing = wasShowing;
}

void DateEdit::setLimits(const QDate& earliest, const QDate& latest) {
  if (!earliest.isValid() || !latest.isValid() || latest < earliest) {
    return;
  }
  const bool wasEmpty = isEmpty();
  const QDateTime before = value();
  m_earliest = earliest;
  m_latest = latest;
  applyRange();
  showValue(wasEmpty ? QDateTime() : before);
}

QDateTime DateEdit::emptyMarker() const {
  if (m_mode == Mode::Time) {
    return QDateTime(kTimeDay.addDays(-1), QTime(0, 0));
  }
  return QDateTime(m_earliest.addDays(-1), QTime(0, 0));
}

void DateEdit::applyRange() {
  const bool wasShowing = std::exchange(m_showing, true);
  if (m_mode == Mode::Time) {
    setDateTimeRange(emptyMarker(), QDateTime(kTimeDay, QTime(23, 59, 59)));
  } else {
    setDateTimeRange(emptyMarker(), QDateTime(m_latest, QTime(23, 59, 59)));
  }
  m_showing = wasShowing;
}

bool DateEdit::isEmpty() const { return dateTime() == emptyMarker(); }

QDateTime DateEdit::value() const {
  if (isEmpty()) {
    return {};
  }
  const QDateTime shown = dateTime();
  if (m_mode == Mode::Time) {
    return QDateTime(kTimeDay, shown.time());
  }
  return QDateTime(shown.date(), QTime(0, 0));
}

void DateEdit::showValue(const QDateTime& value) {
  const bool wasShowing = std::exchange(m_showing, true);
  if (!value.isValid()) {
    setDateTime(emptyMarker());
  } else if (m_mode == Mode::Time) {
    setDateTime(QDateTime(kTimeDay, QTime(value.time().hour(), value.time().minute())));
  } else {
    setDateTime(QDateTime(value.date(), QTime(0, 0)));
  }
  m_showing = wasShowing;
}

QString DateEdit::shownText() const { return isEmpty() ? QString() : text(); }

QDateTime DateEdit::startingValue() const {
  if (m_mode == Mode::Time) {
    const QTime now = QTime::currentTime();
    return QDateTime(kTimeDay, QTime(now.hour(), now.minute()));
  }
  const QDate today = qBound(m_earliest, QDate::currentDate(), m_latest);
  return QDateTime(today, QTime(0, 0));
}

void DateEdit::startFromNow() {
  showValue(startingValue());
  Q_EMIT valueEdited(value());
  setCurrentSectionIndex(0);
}

void DateEdit::clearByUser() {
  if (isEmpty()) {
    return;
  }
  showValue(QDateTime());
  Q_EMIT valueEdited(QDateTime());
}

void DateEdit::onChanged(const QDateTime&) {
  if (m_showing) {
    return;
  }
  Q_EMIT valueEdited(value());
}

void DateEdit::keyPressEvent(QKeyEvent* event) {
  if (isReadOnly()) {
    QDateTimeEdit::keyPressEvent(event);
    return;
  }
  if (event->key() == Qt::Key_Delete && event->modifiers() == Qt::NoModifier) {
    clearByUser();
    event->accept();
    return;
  }
  if (isEmpty()) {
    const QString typed = event->text();
    if (!typed.isEmpty() && typed.at(0).isDigit()) {
      // Typing into a blank box begins at today, with the first part selected to be typed over.
      startFromNow();
      lineEdit()->selectAll();
      setSelectedSection(sectionAt(0));
    }
  }
  QDateTimeEdit::keyPressEvent(event);
}

void DateEdit::stepBy(int steps) {
  if (isEmpty()) {
    startFromNow();
    return;
  }
  QDateTimeEdit::stepBy(steps);
}

void DateEdit::contextMenuEvent(QContextMenuEvent* event) {
  QMenu* menu = lineEdit()->createStandardContextMenu();
  menu->addSeparator();
  QAction* clear = menu->addAction(m_mode == Mode::Time ? tr("Clear Time") : tr("Clear Date"));
  clear->setEnabled(!isEmpty() && !isReadOnly() && isEnabled());
  connect(clear, &QAction::triggered, this, &DateEdit::clearByUser);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  menu->popup(event->globalPos());
  event->accept();
}

bool DateEdit::eventFilter(QObject* watched, QEvent* event) {
  // The calendar of an empty box opens on this month, not on the blank marker's.
  if (event->type() == QEvent::Show && isEmpty()) {
    if (auto* calendar = qobject_cast<QCalendarWidget*>(watched)) {
      const QDate today = startingValue().date();
      calendar->setCurrentPage(today.year(), today.month());
    }
  }
  return QDateTimeEdit::eventFilter(watched, event);
}

}  // namespace adjustacc::desktop
