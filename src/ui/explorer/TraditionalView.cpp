#include "ui/explorer/TraditionalView.h"

namespace gorvan::ui {

TraditionalView::TraditionalView(frmMenu& menu) {
  setObjectName(QStringLiteral("TraditionalView"));
  (void)menu;
}

}  // namespace gorvan::ui
