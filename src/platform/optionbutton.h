#pragma once
// An option button (mRdo(i)). Options that share a group are exclusive: choosing one clears the others,
// as options in one frame behave for the person.

#include "platform/control.h"

#include <QList>

#include <initializer_list>
#include <memory>

namespace adjustacc::platform {

class OptionButton : public Control {
  Q_OBJECT
public:
  explicit OptionButton(QString name, QString caption = {}, QObject* parent = nullptr);
  ~OptionButton() override;

  QString caption() const { return m_caption; }
  void setCaption(const QString& caption);

  bool value() const { return m_value; }
  // Setting True clears the other options of the group; Click fires whenever an option becomes chosen.
  void setValue(bool value);

  // Makes the given options one exclusive group (an option belongs to at most one group; joining a new
  // group leaves the old one).
  static void makeGroup(std::initializer_list<OptionButton*> options);
  static void makeGroup(const QList<OptionButton*>& options);

  // The person chooses the option: ignored (false) when it cannot be used.
  bool userChoose();

Q_SIGNALS:
  void valueChanged(bool value);
  void clicked();  // Click: the option became chosen

private:
  struct Group {
    QList<QPointer<OptionButton>> members;
  };
  void leaveGroup();

  QString m_caption;
  bool m_value = false;
  std::shared_ptr<Group> m_group;
};

}  // namespace adjustacc::platform
