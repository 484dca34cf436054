#include "platform/optionbutton.h"

#include <utility>

namespace adjustacc::platform {

OptionButton::OptionButton(QString name, QString caption, QObject* parent)
    : Control(std::move(name), parent), m_caption(std::move(caption)) {}

OptionButton::~OptionButton() {
  leaveGroup();
}

void OptionButton::setCaption(const QString& caption) {
  if (m_caption == caption) {
    return;
  }
  m_caption = caption;
  notifyChanged();
}

void OptionButton::setValue(bool value) {
  if (m_value == value) {
    return;
  }
  if (value && m_group) {
    // Clear the others first so that no observer ever sees two chosen options of one group.
    for (const QPointer<OptionButton>& other : m_group->members) {
      if (other && other != this) {
        other->setValue(false);
      }
    }
  }
  m_value = value;
  notifyChanged();
  Q_EMIT valueChanged(m_value);
  if (m_value) {
    Q_EMIT clicked();
  }
}

void OptionButton::makeGroup(std::initializer_list<OptionButton*> options) {
  makeGroup(QList<OptionButton*>(options));
}

void OptionButton::makeGroup(const QList<OptionButton*>& options) {
  auto group = std::make_shared<Group>();
  for (OptionButton* option : options) {
    if (option == nullptr) {
      qCWarning(lcControls) << "null option in an option group skipped";
      continue;
    }
    option->leaveGroup();
    option->m_group = group;
    group->members.append(option);
  }
}

void OptionButton::leaveGroup() {
  if (m_group) {
    m_group->members.removeAll(QPointer<OptionButton>(this));
    m_group.reset();
  }
}

bool OptionButton::userChoose() {
  if (!isEffectivelyEnabled() || !isEffectivelyVisible()) {
    return false;
  }
  setValue(true);
  return true;
}

}  // namespace adjustacc::platform
