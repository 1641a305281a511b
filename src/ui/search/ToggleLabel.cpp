#include "ui/search/ToggleLabel.h"

#include <QAbstractButton>
#include <QMouseEvent>

namespace gorvan::ui {

ToggleLabel::ToggleLabel(const QString& text, QAbstractButton* box, const char* objectName,
                         QWidget* parent)
    : QLabel(text, parent), box_(box) {
  setObjectName(QLatin1String(objectName));
  setTextFormat(Qt::PlainText);
  setBuddy(box);
  // The box has no text of its own: its label names it for screen readers.
  box->setAccessibleName(text.trimmed());
  box->setToolTip(text.trimmed());
}

void ToggleLabel::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint()) &&
      box_->isEnabled()) {
    box_->click();
    box_->setFocus(Qt::MouseFocusReason);
  }
  QLabel::mouseReleaseEvent(event);
}

}  // namespace gorvan::ui
