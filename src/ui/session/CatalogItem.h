#pragma once
// CatalogItem: one item of the catalog as a view shows it and a command acts
// on it — the catalog itself, a category, a disc, a folder, a file or an
// archive member.

#include <QString>
#include <cstdint>

#include "catalog/CatalogRules.h"

namespace gorvan::ui {

struct CatalogItem {
  NodeKind kind = NodeKind::kNone;
  int32_t id = 0;
  int32_t discId = 0;        // the disc of a folder, file or member; the disc itself
  QString name;              // as stored (a disc's without its artist)
  bool hasChildren = false;  // a category with subcategories or discs
};

}  // namespace gorvan::ui
