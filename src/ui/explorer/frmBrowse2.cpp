#include "ui/explorer/frmBrowse2.h"

namespace gorvan::ui {

frmBrowse2::frmBrowse2(frmMenu& menu) {
  setObjectName(QStringLiteral("frmBrowse2"));
  (void)menu;
}

}  // namespace gorvan::ui
