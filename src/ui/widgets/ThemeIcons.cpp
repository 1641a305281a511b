#include "ui/widgets/ThemeIcons.h"

#include <QGuiApplication>
#include <QHash>
#include <QIconEngine>
#include <QMimeDatabase>
#include <QPainter>
#include <QPalette>
#include <QStandardPaths>

#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

// A symbolic icon drawn in the palette's text colour at the moment it is
// painted, as the desktop draws them: dark on a light palette, light on a
// dark one (a symbolic icon's own grey is lost on a dark window).
class SymbolicIconEngine final : public QIconEngine {
 public:
  explicit SymbolicIconEngine(QIcon base) : base_(std::move(base)) {}
  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override {
    const qreal ratio = painter->device() ? painter->device()->devicePixelRatioF() : 1.0;
    QPixmap pm = pixmap(rect.size() * ratio, mode, state);
    pm.setDevicePixelRatio(ratio);
    painter->drawPixmap(rect, pm);
  }
  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
    QPixmap pm = base_.pixmap(size, QIcon::Normal, state);
    if (pm.isNull()) return pm;
    const QPalette palette = QGuiApplication::palette();
    const QColor colour = mode == QIcon::Disabled
                              ? palette.color(QPalette::Disabled, QPalette::WindowText)
                          : mode == QIcon::Selected ? palette.color(QPalette::HighlightedText)
                                                    : palette.color(QPalette::WindowText);
    QPainter p(&pm);
    p.setCompositionMode(QPainter::CompositionMode_SourceIn);
    p.fillRect(pm.rect(), colour);
    return pm;
  }
  QSize actualSize(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
    return base_.actualSize(size, mode, state);
  }
  QList<QSize> availableSizes(QIcon::Mode mode, QIcon::State state) override {
    return base_.availableSizes(mode, state);
  }
  QIconEngine* clone() const override { return new SymbolicIconEngine(base_); }
  QString key() const override { return QStringLiteral("GorvanSymbolic"); }

 private:
  QIcon base_;
};

QIcon FirstOf(std::initializer_list<const char*> names) {
  for (const char* name : names) {
    QIcon icon = ThemeIcons::Named(name);
    if (!icon.isNull()) return icon;
  }
  return QIcon();
}

}  // namespace

void ThemeIcons::Setup() {
  // Some platforms (offscreen, a bare X server without a desktop) search no
  // system folder for themes: add the freedesktop ones.
  QStringList paths = QIcon::themeSearchPaths();
  const QStringList system =
      QStandardPaths::locateAll(QStandardPaths::GenericDataLocation, QStringLiteral("icons"),
                                QStandardPaths::LocateDirectory);
  for (const QString& folder : system) {
    if (!paths.contains(folder)) paths << folder;
  }
  if (!paths.contains(QStringLiteral("/usr/share/icons")))
    paths << QStringLiteral("/usr/share/icons");
  QIcon::setThemeSearchPaths(paths);
  QIcon::setFallbackThemeName(QStringLiteral("Adwaita"));
  // Without a desktop (a bare X server, the offscreen platform) Qt names no
  // theme; Adwaita is installed with the program's dependencies.
  if (QIcon::themeName().isEmpty() || QIcon::themeName() == QLatin1String("hicolor")) {
    QIcon::setThemeName(QStringLiteral("Adwaita"));
  }
}

QIcon ThemeIcons::Named(const char* name) {
  static QHash<QString, QIcon> cache;
  const QString key = QLatin1String(name);
  auto it = cache.constFind(key);
  if (it != cache.constEnd()) return *it;
  QIcon icon;
  // "a|b": the first of the names the theme has.
  for (const QString& one : key.split(QLatin1Char('|'))) {
    icon = QIcon::fromTheme(one);
    if (icon.isNull()) {
      const QIcon symbolic = QIcon::fromTheme(one + QStringLiteral("-symbolic"));
      if (!symbolic.isNull()) icon = QIcon(new SymbolicIconEngine(symbolic));
    }
    if (!icon.isNull()) break;
  }
  cache.insert(key, icon);
  return icon;
}

QIcon ThemeIcons::Disc(std::string_view iconKey) {
  if (iconKey == "audiocd") return FirstOf({"media-optical-cd-audio", "media-optical"});
  if (iconKey == "cdrom") return FirstOf({"media-optical", "drive-optical"});
  if (iconKey == "removable") return FirstOf({"media-removable", "drive-removable-media"});
  if (iconKey == "remote") return FirstOf({"folder-remote", "network-server"});
  if (iconKey == "ramdisk") return FirstOf({"media-flash", "drive-harddisk"});
  if (iconKey == "fixed") return FirstOf({"drive-harddisk"});
  return FirstOf({"drive-harddisk", "media-optical"});
}

QIcon ThemeIcons::Category() { return FirstOf({"folder-documents", "folder"}); }

QIcon ThemeIcons::Catalog() { return FirstOf({"x-office-address-book", "system-file-manager"}); }

QIcon ThemeIcons::Folder() { return FirstOf({"folder", "inode-directory"}); }

static QHash<QString, QIcon>& UserFileIcons() {
  static QHash<QString, QIcon> icons;
  return icons;
}

void ThemeIcons::SetFileTypeIcons(const QHash<QString, QIcon>& icons) { UserFileIcons() = icons; }

QIcon ThemeIcons::File(std::string_view name) {
  static QHash<QString, QIcon> byExtension;
  static QMimeDatabase mime;
  const size_t dot = name.rfind('.');
  const QString ext =
      dot == std::string_view::npos || dot == 0 ? QString() : Qs(name.substr(dot + 1)).toLower();
  if (!ext.isEmpty()) {
    auto mine = UserFileIcons().constFind(ext);
    if (mine != UserFileIcons().constEnd()) return *mine;
  }
  auto it = byExtension.constFind(ext);
  if (it != byExtension.constEnd()) return *it;
  QIcon icon;
  if (!ext.isEmpty()) {
    const QMimeType type =
        mime.mimeTypeForFile(QStringLiteral("x.") + ext, QMimeDatabase::MatchExtension);
    icon = QIcon::fromTheme(type.iconName());
    if (icon.isNull()) icon = QIcon::fromTheme(type.genericIconName());
  }
  if (icon.isNull()) icon = FirstOf({"text-x-generic", "application-x-generic"});
  byExtension.insert(ext, icon);
  return icon;
}

}  // namespace gorvan::ui
