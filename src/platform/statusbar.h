#pragma once
// The host window's status area as the screens use it: one status text and a busy switch, for the
// container the document lives in. The desktop listens to the signals and shows both.

#include <QObject>
#include <QString>

namespace adjustacc::platform {

class StatusBar : public QObject {
  Q_OBJECT
public:
  explicit StatusBar(QObject* parent = nullptr);
  ~StatusBar() override;

  // Ties the status area to the hosting container (its tag); done when the document is shown.
  void initialize(const QString& containerTag);
  QString containerTag() const { return m_containerTag; }

  QString text() const { return m_text; }
  void setText(const QString& text);

  // The busy switch: false while a save is outstanding ("not ready"), true again with the first reply.
  bool isReady() const { return m_ready; }
  void setReady(bool ready);

Q_SIGNALS:
  void textChanged(const QString& text);
  void readyChanged(bool ready);
  void containerTagChanged(const QString& tag);

private:
  QString m_containerTag;
  QString m_text;
  bool m_ready = true;
};

}  // namespace adjustacc::platform
