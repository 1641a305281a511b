#include "ui/dialogs/CategoryPropertiesDialog.h"

#include <unordered_map>
#include <unordered_set>

#include "ui/session/CatalogReads.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {

CategoryPropertiesDialog::CategoryPropertiesDialog(CatalogSession& session, const CatalogItem& item,
                                                   QWidget* parent)
    : PropertiesDialog(session, item, "frmCategoryProperties", parent) {
  Load([item](classData& d, const std::stop_token& stop) { return Read(d, item, stop); });
}

PropertiesData CategoryPropertiesDialog::Read(classData& d, const CatalogItem& item,
                                              const std::stop_token& stop) {
  PropertiesData p;
  const CatalogSnapshot s = CatalogReads::Catalog(d, stop);
  p.status = s.status;
  std::unordered_map<int32_t, const CategoryRow*> byId;
  for (const CategoryRow& c : s.categories) byId.emplace(c.id, &c);
  const auto self = byId.find(item.id);
  if (self == byId.end()) {
    p.status = Status::NotFound(Std(QObject::tr("The category is no longer in the catalog")));
    return p;
  }
  p.name = self->second->name;
  p.nameEditable = true;
  p.notes = self->second->notes;
  // The path from the top; a loop of parents ends it.
  std::string path = p.name;
  std::unordered_set<int32_t> seen{item.id};
  for (int32_t up = self->second->parent; up != 0 && byId.count(up) && seen.insert(up).second;
       up = byId[up]->parent) {
    path = byId[up]->name + "\\" + path;
  }
  // Below: this category and every category whose parents lead to it.
  auto below = [&](int32_t id) {
    std::unordered_set<int32_t> visited;
    for (int32_t up = id; up != 0 && visited.insert(up).second;) {
      if (up == item.id) return true;
      const auto it = byId.find(up);
      if (it == byId.end()) return false;
      up = it->second->parent;
    }
    return false;
  };
  int subcategories = 0;
  for (const CategoryRow& c : s.categories) subcategories += c.parent == item.id ? 1 : 0;
  int64_t files = 0;
  double bytes = 0;
  p.tableTitle = Std(QObject::tr("Discs filed below this category:"));
  p.tableHeader = {Std(QObject::tr("Disc")), Std(QObject::tr("Files")), Std(QObject::tr("Size"))};
  for (const DiscRow& disc : s.discs) {
    if (!below(disc.category)) continue;
    files += disc.files;
    bytes += disc.totalSize;
    p.table.push_back(
        {disc.DisplayName(), std::to_string(disc.files), Std(SizeText(disc.totalSize))});
  }
  auto add = [&p](const QString& label, const QString& value) {
    p.fields.emplace_back(Std(label), Std(value));
  };
  add(QObject::tr("Path"), Qs(path).replace(QLatin1Char('\\'), QStringLiteral(" / ")));
  add(QObject::tr("Created"), DateText(self->second->created));
  add(QObject::tr("Subcategories"), QString::number(subcategories));
  add(QObject::tr("Discs below"), QString::number(p.table.size()));
  add(QObject::tr("Files below"), QString::number(files));
  add(QObject::tr("Size below"), SizeText(bytes));
  return p;
}

}  // namespace gorvan::ui
