#include "ui/main/frmSplash.h"

#include <QApplication>
#include <QFontMetrics>
#include <QPainter>
#include <QScreen>

#include "app/AppFolder.h"
#include "ui/widgets/ThemeIcons.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {

QPixmap frmSplash::Picture() {
  QFont title = QApplication::font();
  title.setPointSizeF(title.pointSizeF() * 3);
  title.setBold(true);
  const QFont text = QApplication::font();
  const QFontMetrics tm(title), fm(text);
  const int width = tm.horizontalAdvance(QStringLiteral("Gorvan")) * 3;
  const int height = tm.height() * 4;
  const qreal dpr = qApp->primaryScreen() ? qApp->primaryScreen()->devicePixelRatio() : 1.0;
  QPixmap picture(QSize(width, height) * dpr);
  picture.setDevicePixelRatio(dpr);
  const QPalette pal = QApplication::palette();
  picture.fill(pal.color(QPalette::Highlight));
  QPainter p(&picture);
  p.setRenderHint(QPainter::Antialiasing);
  const int icon = tm.height() * 2;
  ThemeIcons::Disc("cdrom").paint(&p, QRect(tm.height() / 2, (height - icon) / 2, icon, icon));
  p.setPen(pal.color(QPalette::HighlightedText));
  p.setFont(title);
  const QRect textArea(icon + tm.height(), 0, width - icon - tm.height(), height);
  p.drawText(textArea.adjusted(0, 0, 0, -fm.height() * 2), Qt::AlignLeft | Qt::AlignVCenter,
             QStringLiteral("Gorvan"));
  p.setFont(text);
  p.drawText(
      textArea.adjusted(0, tm.height(), 0, 0), Qt::AlignLeft | Qt::AlignVCenter,
      QObject::tr("Version %1 - catalogues your discs and folders").arg(Qs(VersionNumber())));
  return picture;
}

frmSplash::frmSplash() : QSplashScreen(Picture()) { setObjectName(QStringLiteral("frmSplash")); }

}  // namespace gorvan::ui
