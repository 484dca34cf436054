#pragma once
// A one-line label that gives way when room is short: it asks for its whole text but can be narrowed to a few
// characters, and then shows the text shortened with "..." (where the label says) and whole in its tooltip.
// The status bar's labels are such, so that a long host address never makes the window wider than the screen.

#include <QLabel>

namespace adjustacc::desktop {

class ElidedLabel : public QLabel {
  Q_OBJECT
public:
  explicit ElidedLabel(Qt::TextElideMode mode, QWidget* parent = nullptr);

  QSize minimumSizeHint() const override;
  // Whether the text is shown shortened at the label's present width.
  bool isElided() const;

protected:
  void paintEvent(QPaintEvent* event) override;
  bool event(QEvent* event) override;

private:
  Qt::TextElideMode m_mode;
};

}  // namespace adjustacc::desktop
