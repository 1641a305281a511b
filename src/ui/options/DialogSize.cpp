#include "ui/options/DialogSize.h"

#include <QDialog>

#include "app/WindowLayout.h"
#include "ui/session/UiSettings.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {

void DialogSize::Keep(QDialog* dialog) {
  if (!UiSettings::Switch("RetainSize")) return;
  const std::string name = Std(dialog->objectName());
  const QSize hint = dialog->sizeHint();
  const WindowSize designed{static_cast<float>(hint.width()), static_cast<float>(hint.height())};
  const WindowSize restored = WindowLayout::RestoreSize(name, designed);
  dialog->resize(
      QSize(static_cast<int>(restored.width), static_cast<int>(restored.height)).expandedTo(hint));
  QObject::connect(dialog, &QDialog::finished, dialog, [dialog, name, restored] {
    const WindowSize now{static_cast<float>(dialog->width()), static_cast<float>(dialog->height())};
    WindowLayout::SaveSize(name, now, restored);
  });
}

}  // namespace gorvan::ui
