#include "modalscreen.h"

#include "platform/services.h"

#include <utility>

namespace adjustacc::screencore {

ModalScreen::ModalScreen(platform::Services& services, const QString& formName, QString caption, QObject* parent)
    : QObject(parent), m_services(services), source(formName), m_formName(formName), m_caption(std::move(caption)) {}

ModalScreen::~ModalScreen() = default;

void ModalScreen::setVisible(bool visible) {
  if (visible && !m_loaded) {
    m_loaded = true;
    loaded();
  }
  m_visible = visible;
  if (visible) {
    activated();
  }
}

void ModalScreen::showModal() { m_services.ui.showModal(*this); }

void ModalScreen::unload() {
  m_visible = false;
  m_loaded = false;
}

}  // namespace adjustacc::screencore
