#include "ui/help/frmAbout.h"

#include <blkid/blkid.h>
#include <curl/curl.h>
#include <openssl/crypto.h>
#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>
#include <xlsxwriter.h>

#include <QApplication>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/AppFolder.h"
#include "app/SettingsStore.h"
#include "app/StartupSequence.h"
#include "catalog/Records.h"
#include "ui/options/ProgramState.h"
#include "ui/widgets/ThemeIcons.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {

QStringList frmAbout::Libraries() {
  QStringList out;
  out << QStringLiteral("Qt ") + QLatin1String(qVersion());
  out << QStringLiteral("libcurl ") + QLatin1String(curl_version_info(CURLVERSION_NOW)->version);
  char pcre[64] = {};
  if (pcre2_config(PCRE2_CONFIG_VERSION, pcre) > 0)
    out << QStringLiteral("PCRE2 ") + QLatin1String(pcre);
  out << QLatin1String(OpenSSL_version(OPENSSL_VERSION));
  const char* blkid = nullptr;
  blkid_get_library_version(&blkid, nullptr);
  if (blkid) out << QStringLiteral("libblkid ") + QLatin1String(blkid);
  // Known when the program was built; libarchive is loaded when an archive
  // is first listed.
  out << QStringLiteral("libarchive " GORVAN_LIBARCHIVE_VERSION);
  out << QStringLiteral("libxlsxwriter " LXW_VERSION);
  out << QStringLiteral("libudev " GORVAN_UDEV_VERSION);
  out << QStringLiteral("nlohmann-json " GORVAN_JSON_VERSION);
  return out;
}

QString frmAbout::Facts() {
  const AppFiles& files = ProgramState::Current().files();
  QStringList lines;
  lines << tr("Version: %1").arg(Qs(VersionString()));
  lines << tr("Catalog format: %1.%2")
               .arg(HeaderRecord::kVersionMajor)
               .arg(HeaderRecord::kVersionMinor);
  lines << tr("Libraries: %1").arg(Libraries().join(QStringLiteral(", ")));
  lines << tr("Application folder: %1").arg(Qs(files.appFolder));
  lines << tr("Settings: %1").arg(Qs(SettingsStore::FilePath()));
  lines << tr("INI file: %1").arg(Qs(files.iniFile));
  return lines.join(QLatin1Char('\n'));
}

frmAbout::frmAbout(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("frmAbout"));
  setWindowTitle(tr("About Gorvan"));
  auto* icon = new QLabel;
  const int side = fontMetrics().height() * 4;
  icon->setPixmap(QApplication::windowIcon().isNull()
                      ? ThemeIcons::Disc("cdrom").pixmap(side, side)
                      : QApplication::windowIcon().pixmap(side, side));
  icon->setAlignment(Qt::AlignTop);
  auto* title = new QLabel(QStringLiteral("Gorvan ") + Qs(VersionString()));
  title->setObjectName(QStringLiteral("lblVersion"));
  QFont big = title->font();
  big.setBold(true);
  big.setPointSizeF(big.pointSizeF() * 1.5);
  title->setFont(big);
  auto* what = new QLabel(tr("A catalog of your CDs, DVDs, disks and folders."));
  auto* facts = new QLabel(Facts());
  facts->setObjectName(QStringLiteral("lblFacts"));
  facts->setTextFormat(Qt::PlainText);
  facts->setWordWrap(true);
  facts->setTextInteractionFlags(Qt::TextSelectableByMouse);
  facts->setMinimumWidth(fontMetrics().averageCharWidth() * 60);

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
  buttons->button(QDialogButtonBox::Close)->setObjectName(QStringLiteral("btnOK"));
  QPushButton* copy = buttons->addButton(tr("&Copy"), QDialogButtonBox::ActionRole);
  copy->setObjectName(QStringLiteral("btnCopy"));
  connect(copy, &QPushButton::clicked, this, [] {
    QApplication::clipboard()->setText(QStringLiteral("Gorvan ") + Qs(VersionString()) +
                                       QLatin1Char('\n') + Facts());
  });
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  auto* text = new QVBoxLayout;
  text->addWidget(title);
  text->addWidget(what);
  text->addSpacing(fontMetrics().height() / 2);
  text->addWidget(facts, 1);
  auto* top = new QHBoxLayout;
  top->addWidget(icon);
  top->addLayout(text, 1);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(top, 1);
  layout->addWidget(buttons);
}

}  // namespace gorvan::ui
