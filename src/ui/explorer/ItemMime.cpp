#include "ui/explorer/ItemMime.h"

#include <QDataStream>
#include <QIODevice>

namespace gorvan::ui {

QMimeData* ItemMime::Encode(const CatalogItem& item) {
  QByteArray bytes;
  QDataStream out(&bytes, QIODevice::WriteOnly);
  out << static_cast<qint32>(item.kind) << item.id << item.discId << item.name;
  auto* data = new QMimeData;
  data->setData(QLatin1String(kItemMimeType), bytes);
  return data;
}

bool ItemMime::Decode(const QMimeData* data, CatalogItem* item) {
  if (!data || !data->hasFormat(QLatin1String(kItemMimeType))) return false;
  QByteArray bytes = data->data(QLatin1String(kItemMimeType));
  QDataStream in(&bytes, QIODevice::ReadOnly);
  qint32 kind = 0;
  in >> kind >> item->id >> item->discId >> item->name;
  if (in.status() != QDataStream::Ok || kind < 0 ||
      kind > static_cast<qint32>(NodeKind::kArchiveMember)) {
    return false;
  }
  item->kind = static_cast<NodeKind>(kind);
  return true;
}

}  // namespace gorvan::ui
