#include "ui/help/TipFile.h"

#include <QCoreApplication>
#include <QFile>
#include <QStringDecoder>

namespace gorvan::ui {

void TipFile::Load(const QString& path) {
  tips_.clear();
  problem_.clear();
  QFile file(path);
  if (path.isEmpty() || !file.open(QIODevice::ReadOnly)) {
    problem_ = QCoreApplication::translate("TipFile", "The tips file %1 cannot be read.")
                   .arg(path.isEmpty() ? QStringLiteral("Gorvan.tip") : path);
  } else {
    QByteArray bytes = file.read(kMaxBytes);
    // A cut at the size limit may split the last line: it goes.
    if (!file.atEnd()) bytes.truncate(bytes.lastIndexOf('\n') + 1);
    QStringDecoder decode(QStringDecoder::Utf8);
    const QString text = decode(bytes);
    for (QStringView line : QStringView(text).split(QLatin1Char('\n'))) {
      const QString tip = line.trimmed().toString();
      if (tip.isEmpty() || tip.startsWith(QLatin1Char('#'))) continue;
      tips_ << (tip.size() > kMaxTipLength ? tip.left(kMaxTipLength - 1) + QChar(0x2026) : tip);
      if (tips_.size() == kMaxTips) break;
    }
    if (tips_.isEmpty()) {
      problem_ =
          QCoreApplication::translate("TipFile", "The tips file %1 holds no tips.").arg(path);
    }
  }
  if (tips_.isEmpty()) {
    tips_ << QCoreApplication::translate(
        "TipFile",
        "Press F1 to read the manual: it explains scanning, browsing, searching and exporting.");
  }
}

}  // namespace gorvan::ui
