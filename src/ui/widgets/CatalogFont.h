#pragma once
// CatalogFont: the font a catalog is shown in. The catalog's font text names a
// family; an empty text means "Arabic Transparent"; a family that is not
// installed falls back to the desktop's own font.

#include <QFont>
#include <string>

namespace gorvan::ui {

inline constexpr const char* kDefaultCatalogFont = "Arabic Transparent";

class CatalogFont {
 public:
  // The font for the catalog's font text.
  static QFont For(const std::string& fontText);
  // The family the font text asks for ("Arabic Transparent" when empty).
  static QString Family(const std::string& fontText);
};

}  // namespace gorvan::ui
