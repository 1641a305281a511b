#include "ui/widgets/CatalogFont.h"

#include <QApplication>
#include <QFontDatabase>

#include "ui/widgets/UiText.h"

namespace gorvan::ui {

QString CatalogFont::Family(const std::string& fontText) {
  return fontText.empty() ? Qs(kDefaultCatalogFont) : Qs(fontText);
}

QFont CatalogFont::For(const std::string& fontText) {
  QFont font = QApplication::font();
  const QString family = Family(fontText);
  if (QFontDatabase::families().contains(family, Qt::CaseInsensitive)) font.setFamily(family);
  return font;
}

}  // namespace gorvan::ui
