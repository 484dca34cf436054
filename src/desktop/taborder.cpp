#include "taborder.h"

#include "platform/control.h"

#include <QWidget>

#include <algorithm>

namespace adjustacc::desktop {

TabOrder::TabOrder(QObject* parent) : QObject(parent) {}

void TabOrder::add(platform::Control& control, QWidget& widget) {
  m_entries.append(Entry{&control, &widget, widget.focusPolicy(), static_cast<int>(m_entries.size())});
  connect(&control, &platform::Control::changed, this, &TabOrder::schedule);
  schedule();
}

void TabOrder::schedule() {
  if (m_scheduled) {
    return;
  }
  m_scheduled = true;
  QMetaObject::invokeMethod(this, [this] { apply(); }, Qt::QueuedConnection);
}

QList<QWidget*> TabOrder::chain() const {
  QList<Entry> ordered;
  for (const Entry& entry : m_entries) {
    if (entry.control && entry.widget) {
      ordered.append(entry);
    }
  }
  std::stable_sort(ordered.begin(), ordered.end(), [](const Entry& a, const Entry& b) {
    const int ia = a.control->tabIndex();
    const int ib = b.control->tabIndex();
    // Controls without an index come after those with one, in the order they were added.
    if ((ia < 0) != (ib < 0)) {
      return ia >= 0;
    }
    if (ia != ib && ia >= 0) {
      return ia < ib;
    }
    return a.added < b.added;
  });
  QList<QWidget*> result;
  for (const Entry& entry : ordered) {
    result.append(entry.widget.data());
  }
  return result;
}

void TabOrder::apply() {
  m_scheduled = false;
  for (const Entry& entry : std::as_const(m_entries)) {
    if (!entry.control || !entry.widget) {
      continue;
    }
    Qt::FocusPolicy policy = entry.policy;
    if (!entry.control->tabStop() && (policy & Qt::TabFocus)) {
      policy = static_cast<Qt::FocusPolicy>(policy & ~Qt::TabFocus);
    }
    entry.widget->setFocusPolicy(policy);
  }
  const QList<QWidget*> widgets = chain();
  for (qsizetype i = 1; i < widgets.size(); ++i) {
    QWidget::setTabOrder(widgets.at(i - 1), widgets.at(i));
  }
}

}  // namespace adjustacc::desktop
