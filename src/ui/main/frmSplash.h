#pragma once
// frmSplash: the window shown at once when Gorvan starts and closed when the
// main window shows. Drawn from the theme's colours and fonts, so it suits any
// screen density.

#include <QSplashScreen>

namespace gorvan::ui {

class frmSplash : public QSplashScreen {
  Q_OBJECT

 public:
  frmSplash();

  static QPixmap Picture();
};

}  // namespace gorvan::ui
