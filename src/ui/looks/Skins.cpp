#include "ui/looks/Skins.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPainter>
#include <QPixmap>
#include <QRegularExpression>
#include <QStringDecoder>
#include <QWidget>

#include "app/Resources.h"
#include "app/SettingsRecord.h"
#include "ui/options/ProgramState.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

constexpr const char* kHeaderTitle = "Gorvan skin";

QColor Mix(const QColor& a, const QColor& b, double t) {
  return QColor::fromRgbF(static_cast<float>(a.redF() + (b.redF() - a.redF()) * t),
                          static_cast<float>(a.greenF() + (b.greenF() - a.greenF()) * t),
                          static_cast<float>(a.blueF() + (b.blueF() - a.blueF()) * t));
}

QList<Skins::Skin> SkinsIn(const QString& folder, bool shipped) {
  QList<Skins::Skin> out;
  if (folder.isEmpty()) return out;
  const QFileInfoList files = QDir(folder).entryInfoList(
      {QStringLiteral("*.qss")}, QDir::Files | QDir::Readable, QDir::Name | QDir::IgnoreCase);
  for (const QFileInfo& f : files) out.append({f.completeBaseName(), f.filePath(), shipped});
  return out;
}

// Collects Qt's complaints about style sheets while it lives.
class SheetWarnings {
 public:
  SheetWarnings() {
    current_ = this;
    previous_ = qInstallMessageHandler(&Handler);
  }
  ~SheetWarnings() {
    qInstallMessageHandler(previous_);
    current_ = nullptr;
  }
  bool failed() const { return failed_; }

 private:
  static void Handler(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    if (current_ && text.contains(QLatin1String("Could not parse"))) {
      current_->failed_ = true;
      return;
    }
    if (current_ && current_->previous_) current_->previous_(type, context, text);
  }
  static inline SheetWarnings* current_ = nullptr;
  QtMessageHandler previous_ = nullptr;
  bool failed_ = false;
};

}  // namespace

const QList<std::pair<const char*, QColor SkinColours::*>>& SkinColours::Keys() {
  static const QList<std::pair<const char*, QColor SkinColours::*>> keys = {
      {"window", &SkinColours::window},
      {"window-text", &SkinColours::windowText},
      {"base", &SkinColours::base},
      {"alternate-base", &SkinColours::alternateBase},
      {"text", &SkinColours::text},
      {"button", &SkinColours::button},
      {"button-text", &SkinColours::buttonText},
      {"highlight", &SkinColours::highlight},
      {"highlighted-text", &SkinColours::highlightedText},
  };
  return keys;
}

QPalette SkinColours::Palette() const {
  QPalette p;
  const bool dark = window.lightnessF() < 0.5;
  for (QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
    p.setColor(group, QPalette::Window, window);
    p.setColor(group, QPalette::WindowText, windowText);
    p.setColor(group, QPalette::Base, base);
    p.setColor(group, QPalette::AlternateBase, alternateBase);
    p.setColor(group, QPalette::Text, text);
    p.setColor(group, QPalette::Button, button);
    p.setColor(group, QPalette::ButtonText, buttonText);
    p.setColor(group, QPalette::Highlight, highlight);
    p.setColor(group, QPalette::HighlightedText, highlightedText);
    p.setColor(group, QPalette::ToolTipBase, base);
    p.setColor(group, QPalette::ToolTipText, text);
    p.setColor(group, QPalette::PlaceholderText, Mix(text, base, 0.45));
    p.setColor(group, QPalette::BrightText, dark ? QColor(255, 120, 120) : QColor(200, 0, 0));
    p.setColor(group, QPalette::Light, Mix(button, QColor(Qt::white), dark ? 0.15 : 0.6));
    p.setColor(group, QPalette::Midlight, Mix(button, QColor(Qt::white), dark ? 0.08 : 0.3));
    p.setColor(group, QPalette::Mid, Mix(button, windowText, 0.3));
    p.setColor(group, QPalette::Dark, Mix(button, QColor(Qt::black), dark ? 0.5 : 0.35));
    p.setColor(group, QPalette::Shadow, QColor(Qt::black));
    p.setColor(group, QPalette::Link, dark ? Mix(highlight, QColor(Qt::white), 0.35) : highlight);
    p.setColor(group, QPalette::LinkVisited, Mix(p.color(QPalette::Link), windowText, 0.3));
  }
  const QColor faint = Mix(windowText, window, 0.5);
  for (QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
    p.setColor(QPalette::Disabled, role, faint);
  }
  p.setColor(QPalette::Disabled, QPalette::Highlight, Mix(highlight, window, 0.5));
  return p;
}

SkinColours SkinColours::FromPalette(const QPalette& p) {
  SkinColours c;
  c.window = p.color(QPalette::Window);
  c.windowText = p.color(QPalette::WindowText);
  c.base = p.color(QPalette::Base);
  c.alternateBase = p.color(QPalette::AlternateBase);
  c.text = p.color(QPalette::Text);
  c.button = p.color(QPalette::Button);
  c.buttonText = p.color(QPalette::ButtonText);
  c.highlight = p.color(QPalette::Highlight);
  c.highlightedText = p.color(QPalette::HighlightedText);
  return c;
}

QList<Skins::Skin> Skins::List() {
  QList<Skin> out = SkinsIn(Qs(ProgramState::Current().files().skinsFolder), false);
  const QList<Skin> shipped = SkinsIn(Qs(Resources::File("skins")), true);
  for (const Skin& s : shipped) {
    const bool overridden = std::any_of(out.begin(), out.end(), [&s](const Skin& mine) {
      return mine.name.compare(s.name, Qt::CaseInsensitive) == 0;
    });
    if (!overridden) out.append(s);
  }
  return out;
}

QString Skins::PathOf(const QString& name) {
  for (const Skin& s : List()) {
    if (s.name.compare(name, Qt::CaseInsensitive) == 0) return s.path;
  }
  return {};
}

QString Skins::DisplayName(const QString& name) {
  if (name == QLatin1String(kDefaultSkinName))
    return QObject::tr("Default (light or dark as the desktop)");
  return name;
}

QString Skins::DefaultSkin(const QPalette& desktop) {
  return desktop.color(QPalette::Window).lightnessF() < 0.5 ? QStringLiteral("Dark")
                                                            : QStringLiteral("Light");
}

bool Skins::ParseHeader(const QString& text, SkinColours* colours) {
  static const QRegularExpression header(QStringLiteral("^\\s*/\\*\\s*Gorvan skin\\b([^*]*)\\*/"),
                                         QRegularExpression::CaseInsensitiveOption);
  const QRegularExpressionMatch m = header.match(text);
  if (!m.hasMatch()) return false;
  SkinColours c;
  const QStringList lines = m.captured(1).split(QLatin1Char('\n'));
  for (const QString& line : lines) {
    const qsizetype colon = line.indexOf(QLatin1Char(':'));
    if (colon < 0) continue;
    const QString key = line.left(colon).trimmed().toLower();
    const QString value = line.mid(colon + 1).trimmed();
    if (key == QLatin1String("font")) {
      const qsizetype comma = value.lastIndexOf(QLatin1Char(','));
      c.fontFamily = (comma < 0 ? value : value.left(comma)).trimmed();
      if (comma >= 0) c.fontPointSize = std::clamp(value.mid(comma + 1).trimmed().toInt(), 0, 72);
      continue;
    }
    for (const auto& [name, member] : SkinColours::Keys()) {
      if (key == QLatin1String(name) && QColor::isValidColorName(value)) {
        c.*member = QColor::fromString(value);
      }
    }
  }
  // Every colour must be named; a partial header keeps the desktop's colours.
  for (const auto& [name, member] : SkinColours::Keys()) {
    if (!(c.*member).isValid()) return false;
  }
  *colours = c;
  return true;
}

QString Skins::Write(const SkinColours& c) {
  QString out = QStringLiteral("/* ") + QLatin1String(kHeaderTitle) + QLatin1Char('\n');
  for (const auto& [name, member] : SkinColours::Keys()) {
    out += QLatin1String(name) + QStringLiteral(": ") + (c.*member).name() + QLatin1Char('\n');
  }
  if (!c.fontFamily.isEmpty()) {
    out += QStringLiteral("font: ") + c.fontFamily + QStringLiteral(", ") +
           QString::number(c.fontPointSize) + QLatin1Char('\n');
  }
  out += QStringLiteral("*/\n\n");
  // The palette made from the header colours the widgets; these rules add
  // what a palette cannot say.
  const QColor mid = Mix(c.window, c.windowText, 0.3);
  const QColor documents = Mix(c.window, c.windowText, 0.08);
  out +=
      QStringLiteral(
          "QToolTip { color: %1; background-color: %2; border: 1px solid %3; }\n"
          "QAbstractItemView { alternate-background-color: %4; }\n"
          "QMdiArea { background: %5; }\n"
          "QStatusBar::item { border: none; }\n"
          "QMenu::separator { height: 1px; background: %3; margin: 0.25em 0.5em; }\n")
          .arg(c.text.name(), c.base.name(), mid.name(), c.alternateBase.name(), documents.name());
  return out;
}

bool Skins::IsValidSheet(const QString& sheet) {
  SheetWarnings warnings;
  QWidget probe;
  probe.setStyleSheet(sheet);
  probe.ensurePolished();
  return !warnings.failed();
}

bool Skins::Read(const QString& path, QString* sheet, SkinColours* colours, bool* hasColours,
                 QString* error) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) {
    *error = QObject::tr("The skin %1 cannot be read: %2").arg(path, file.errorString());
    return false;
  }
  if (file.size() > kMaxFileBytes) {
    *error = QObject::tr("The skin %1 is larger than a skin can be.").arg(path);
    return false;
  }
  const QByteArray bytes = file.readAll();
  QStringDecoder decode(QStringDecoder::Utf8);
  const QString text = decode(bytes);
  if (decode.hasError() || bytes.contains('\0')) {
    *error = QObject::tr("The skin %1 is not a style sheet (it is not text).").arg(path);
    return false;
  }
  if (!IsValidSheet(text)) {
    *error = QObject::tr("The skin %1 is not a valid style sheet.").arg(path);
    return false;
  }
  *sheet = text;
  *hasColours = ParseHeader(text, colours);
  return true;
}

QString Skins::FileNameOf(const QString& name) {
  QString out = name.trimmed();
  static const QRegularExpression bad(QStringLiteral("[/\\\\:*?\"<>|\\x00-\\x1f]"));
  out.replace(bad, QStringLiteral("_"));
  if (out.startsWith(QLatin1Char('.'))) out[0] = QLatin1Char('_');
  return out;
}

QIcon Skins::Swatch(const QColor& colour, int size) {
  QPixmap pixmap(size, size);
  pixmap.fill(colour);
  QPainter p(&pixmap);
  p.setPen(QColor(128, 128, 128));
  p.drawRect(0, 0, size - 1, size - 1);
  return QIcon(pixmap);
}

}  // namespace gorvan::ui
