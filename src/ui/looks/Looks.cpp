#include "ui/looks/Looks.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QFontDatabase>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QSet>
#include <QStyle>
#include <QStyleFactory>

#include "app/Prompt.h"
#include "app/SettingsRecord.h"
#include "app/StartupSequence.h"
#include "ui/looks/Backgrounds.h"
#include "ui/looks/Skins.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

struct Desktop {
  bool known = false;
  QString style;
  QPalette palette;
  QFont font;
};

Desktop& TheDesktop() {
  static Desktop desktop;
  return desktop;
}

QString& Current() {
  static QString current;
  return current;
}

QColor Mix(const QColor& a, const QColor& b, double t) {
  return QColor::fromRgbF(static_cast<float>(a.redF() + (b.redF() - a.redF()) * t),
                          static_cast<float>(a.greenF() + (b.greenF() - a.greenF()) * t),
                          static_cast<float>(a.blueF() + (b.blueF() - a.blueF()) * t));
}

double Distance(const QColor& a, const QColor& b) {
  return std::abs(a.lightnessF() - b.lightnessF());
}

void SetAll(QPalette& p, QPalette::ColorRole role, const QColor& c) {
  for (QPalette::ColorGroup g : {QPalette::Active, QPalette::Inactive}) p.setColor(g, role, c);
}

// The factory's key of a style ("Fusion"): its name when it has one, else
// told by its class (QFusionStyle).
QString StyleKey(const QStyle* style) {
  if (!style->name().isEmpty()) return style->name();
  if (!style->objectName().isEmpty()) return style->objectName();
  QString cls = QLatin1String(style->metaObject()->className());
  if (cls.startsWith(QLatin1Char('Q'))) cls.remove(0, 1);
  if (cls.endsWith(QLatin1String("Style"))) cls.chop(5);
  for (const QString& key : QStyleFactory::keys()) {
    if (key.compare(cls, Qt::CaseInsensitive) == 0) return key;
  }
  return cls;
}

// The style set last (a style sheet puts a style of its own in front of it,
// so the application's style does not tell).
QString& AppliedStyle() {
  static QString style;
  return style;
}

void SetStyle(const QString& name) {
  if (AppliedStyle().compare(name, Qt::CaseInsensitive) == 0) return;
  if (QStyle* style = QStyleFactory::create(name)) {
    QApplication::setStyle(style);
    AppliedStyle() = name;
  }
}

// The interface font: the skin's, else "Fonts"/"Default" when installed,
// else the desktop's; the skin's size, else the desktop's.
void ApplyFont(const SkinColours* skin) {
  QFont font = TheDesktop().font;
  const auto installed = [](const std::string& family) {
    return QFontDatabase::families().contains(Qs(family), Qt::CaseInsensitive);
  };
  QString family;
  if (skin && !skin->fontFamily.isEmpty() && installed(Std(skin->fontFamily))) {
    family = skin->fontFamily;
  } else {
    family = Qs(StartupSequence::ChooseFont(installed));
  }
  if (!family.isEmpty()) font.setFamily(family);
  if (skin && skin->fontPointSize > 0) font.setPointSize(skin->fontPointSize);
  if (QApplication::font() != font) QApplication::setFont(font);
}

void ApplyDesktop() {
  const Desktop& d = TheDesktop();
  qApp->setStyleSheet(QString());
  SetStyle(d.style);
  // Only the roles a dark palette needs made right are set; the others stay
  // the desktop theme's, so a light desktop's palette keeps following it.
  QApplication::setPalette(Looks::FollowDark(d.palette));
  ApplyFont(nullptr);
  Current().clear();
}

}  // namespace

void Looks::RememberDesktop() {
  Desktop& d = TheDesktop();
  if (d.known) return;
  d.known = true;
  d.style = StyleKey(QApplication::style());
  AppliedStyle() = d.style;
  // The theme's palette with no role set by us: what the desktop gives.
  d.palette = QApplication::palette();
  d.palette.setResolveMask(0);
  d.font = QApplication::font();
}

QPalette Looks::DesktopPalette() {
  RememberDesktop();
  return TheDesktop().palette;
}

bool Looks::IsDark(const QPalette& palette) {
  return palette.color(QPalette::Window).lightnessF() < 0.5;
}

QPalette Looks::FollowDark(QPalette p) {
  if (!IsDark(p)) return p;
  const QColor base = p.color(QPalette::Base);
  const QColor text = p.color(QPalette::Text);
  const QColor window = p.color(QPalette::Window);
  const QColor windowText = p.color(QPalette::WindowText);
  // Alternating rows a shade off the base, never the light grey of a light
  // palette.
  if (Distance(p.color(QPalette::AlternateBase), base) > 0.12) {
    SetAll(p, QPalette::AlternateBase, Mix(base, text, 0.06));
  }
  // Tool-tips on the dark base.
  if (!IsDark(QPalette(p.color(QPalette::ToolTipBase))) ||
      Distance(p.color(QPalette::ToolTipText), p.color(QPalette::ToolTipBase)) < 0.4) {
    SetAll(p, QPalette::ToolTipBase, base);
    SetAll(p, QPalette::ToolTipText, text);
  }
  // Lines of the views (grid, frames, the tree's lines) drawn from the mid tones.
  if (Distance(p.color(QPalette::Mid), window) < 0.12) {
    SetAll(p, QPalette::Mid, Mix(window, windowText, 0.3));
  }
  if (Distance(p.color(QPalette::Dark), window) < 0.08 ||
      p.color(QPalette::Dark).lightnessF() > window.lightnessF()) {
    SetAll(p, QPalette::Dark, Mix(window, QColor(Qt::black), 0.4));
  }
  if (Distance(p.color(QPalette::PlaceholderText), base) < 0.25) {
    SetAll(p, QPalette::PlaceholderText, Mix(text, base, 0.45));
  }
  if (Distance(p.color(QPalette::Link), base) < 0.3) {
    SetAll(p, QPalette::Link, Mix(p.color(QPalette::Highlight), QColor(Qt::white), 0.4));
  }
  const QColor faint = Mix(windowText, window, 0.5);
  if (Distance(p.color(QPalette::Disabled, QPalette::Text), base) < 0.15) {
    for (QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
      p.setColor(QPalette::Disabled, role, faint);
    }
  }
  return p;
}

QString Looks::ApplySkin(const SettingsRecord& settings) {
  RememberDesktop();
  if (!settings.skinSupportEnabled) {
    ApplyDesktop();
    return {};
  }
  QString name = Qs(settings.skinName);
  if (name.isEmpty() || name == QLatin1String(kDefaultSkinName)) {
    name = Skins::DefaultSkin(TheDesktop().palette);
  }
  const QString path = Skins::PathOf(name);
  QString sheet, error;
  SkinColours colours;
  bool hasColours = false;
  if (path.isEmpty()) {
    error = QObject::tr("The skin \"%1\" is not installed.").arg(name);
  } else if (!Skins::Read(path, &sheet, &colours, &hasColours, &error)) {
    // error says why
  }
  if (!error.isEmpty()) {
    ApplyDesktop();
    return error + QLatin1Char('\n') + QObject::tr("Gorvan uses the desktop's look instead.");
  }
  SetStyle(QStringLiteral("Fusion"));
  QApplication::setPalette(hasColours ? colours.Palette()
                                      : Looks::FollowDark(TheDesktop().palette));
  qApp->setStyleSheet(sheet);
  ApplyFont(hasColours ? &colours : nullptr);
  Current() = name;
  return {};
}

namespace {

// What the views of the document area show behind their rows.
struct ViewBackground {
  int picture = 0;  // 0: the palette's own base
  bool tree = false, details = false, list = false;
};

ViewBackground& LastViewBackground() {
  static ViewBackground last;
  return last;
}

void ApplyToViews(QMdiArea* area) {
  const ViewBackground& b = LastViewBackground();
  for (QAbstractItemView* view : area->findChildren<QAbstractItemView*>()) {
    const QString name = view->objectName();
    bool on = false;
    if (name == QLatin1String("tvwCatalog")) {
      on = b.tree;
    } else if (name == QLatin1String("lvwFilesIcons")) {
      on = b.list;
    } else if (name.startsWith(QLatin1String("lvw"))) {
      on = b.details;
    } else {
      continue;  // views of other windows keep their look
    }
    QWidget* port = view->viewport();
    if (on && b.picture > 0) {
      QPalette p = port->palette();
      p.setBrush(QPalette::Base,
                 Backgrounds::Brush(b.picture, QApplication::palette(), QPalette::Base));
      port->setPalette(p);
      port->setProperty("gorvanBackground", true);
    } else if (port->property("gorvanBackground").toBool()) {
      port->setPalette(QPalette());
      port->setProperty("gorvanBackground", false);
    }
  }
}

}  // namespace

void Looks::ApplyBackground(QMdiArea* area, const SettingsRecord& settings) {
  if (!area) return;
  ViewBackground& views = LastViewBackground();
  if (Current().isEmpty()) {
    const int n = settings.BackgroundPicture();
    area->setBackground(Backgrounds::Brush(n == 0 ? 1 : n, QApplication::palette()));
    // The first background is plain: the views keep their own base.
    views = {n > 1 ? n : 0, settings.backgroundTree, settings.backgroundDetails,
             settings.backgroundList};
  } else {
    // The skin's own rule for the area paints over this.
    area->setBackground(QApplication::palette().brush(QPalette::Dark));
    views = {};
  }
  ApplyToViews(area);
  // Documents opened later (a search window, the disc list) get it too.
  if (!area->property("gorvanBackgroundHooked").toBool()) {
    area->setProperty("gorvanBackgroundHooked", true);
    QObject::connect(area, &QMdiArea::subWindowActivated, area, [area] { ApplyToViews(area); });
  }
}

void Looks::Apply(QMdiArea* area, const SettingsRecord& settings, Prompt& prompt) {
  static QSet<QString> told;
  const QString problem = ApplySkin(settings);
  if (!problem.isEmpty() && !told.contains(Qs(settings.skinName))) {
    told.insert(Qs(settings.skinName));
    prompt.Message(Std(problem), PromptIcon::kWarning);
  }
  ApplyBackground(area, settings);
}

QString Looks::CurrentSkin() { return Current(); }

QString Looks::StyleName() { return AppliedStyle(); }

}  // namespace gorvan::ui
