#pragma once
// ItemMime: a catalog item in a drag — the MIME type only Gorvan's own views
// use, so that what other programs drop is told apart and refused.

#include <QMimeData>

#include "ui/session/CatalogItem.h"

namespace gorvan::ui {

inline constexpr const char* kItemMimeType = "application/x-gorvan-item";

class ItemMime {
 public:
  static QMimeData* Encode(const CatalogItem& item);
  // False when data holds no item of ours (or a damaged one).
  static bool Decode(const QMimeData* data, CatalogItem* item);
};

}  // namespace gorvan::ui
