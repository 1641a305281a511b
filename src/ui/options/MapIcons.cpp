#include "ui/options/MapIcons.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QHash>
#include <QImageReader>

#include "app/IconMap.h"
#include "ui/widgets/ThemeIcons.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

// The keys the map is created with, and what they stand for.
const QHash<QString, QString>& DefaultKeys() {
  static const QHash<QString, QString> keys = {
      {QStringLiteral("i_0143"), QStringLiteral("package-x-generic")},
      {QStringLiteral("i_0144"), QStringLiteral("x-office-document")},
      {QStringLiteral("i_0100"), QStringLiteral("x-office-spreadsheet")},
      {QStringLiteral("i_0027"), QStringLiteral("audio-x-generic")},
  };
  return keys;
}

}  // namespace

QString MapIcons::Caption(const QString& key) {
  static const QHash<QString, const char*> kinds = {
      {QStringLiteral("i_0143"), QT_TRANSLATE_NOOP("MapIcons", "Archive")},
      {QStringLiteral("i_0144"), QT_TRANSLATE_NOOP("MapIcons", "Document")},
      {QStringLiteral("i_0100"), QT_TRANSLATE_NOOP("MapIcons", "Spreadsheet")},
      {QStringLiteral("i_0027"), QT_TRANSLATE_NOOP("MapIcons", "Audio track")},
  };
  if (const char* kind = kinds.value(key)) {
    return QCoreApplication::translate("MapIcons", kind) + QStringLiteral(" (") + key +
           QLatin1Char(')');
  }
  if (key.startsWith(QLatin1Char('/'))) return QFileInfo(key).fileName();
  return key;
}

bool MapIcons::IsPicture(const QString& path) {
  QImageReader reader(path);
  return reader.canRead() && reader.size().isValid();
}

QIcon MapIcons::IconOf(const QString& key) {
  if (key.isEmpty()) return {};
  if (key.startsWith(QLatin1Char('/'))) {
    if (!IsPicture(key)) return {};
    return QIcon(key);
  }
  const QString name = DefaultKeys().value(key, key);
  return ThemeIcons::Named(name.toUtf8().constData());
}

void MapIcons::Apply(const IconMap& map) {
  QHash<QString, QIcon> icons;
  for (const IconMap::Entry& e : map.entries()) {
    QString ext = Qs(e.extension).toLower();
    if (ext.startsWith(QLatin1Char('.'))) ext.remove(0, 1);
    // The first entry of an extension counts, as the map is read.
    if (ext.isEmpty() || icons.contains(ext)) continue;
    const QIcon icon = IconOf(Qs(e.iconKey));
    if (!icon.isNull()) icons.insert(ext, icon);
  }
  ThemeIcons::SetFileTypeIcons(icons);
}

}  // namespace gorvan::ui
