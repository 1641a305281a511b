#include "ui/widgets/UiText.h"

#include <QLocale>
#include <QObject>
#include <cmath>

#include "catalog/Attributes.h"
#include "catalog/TextFormat.h"

namespace gorvan::ui {

QString RowText(std::string_view utf8) {
  // Only the start of a long text can show on a row; converting all of it
  // would cost time on every paint.
  const size_t kMaxBytes = static_cast<size_t>(kMaxRowText) * 4;
  const bool cut = utf8.size() > kMaxBytes;
  QString text = Qs(cut ? utf8.substr(0, kMaxBytes) : utf8);
  for (QChar& c : text) {
    const char16_t u = c.unicode();
    if (u == u'\n' || u == u'\r') {
      c = QChar(0x23CE);
    } else if (u == u'\t') {
      c = QChar(0x2192);
    } else if (u < 0x20 || u == 0x7F) {
      c = QChar(QChar::ReplacementCharacter);
    }
  }
  if (cut || text.size() > kMaxRowText) {
    text.truncate(kMaxRowText);
    text.append(QChar(0x2026));
  }
  return text;
}

QString SizeText(double bytes) {
  bytes = std::fabs(bytes);
  if (bytes < 1024) return QLocale().toString(static_cast<qlonglong>(bytes)) + QStringLiteral(" B");
  return QLocale().formattedDataSize(static_cast<qint64>(bytes), 1,
                                     QLocale::DataSizeTraditionalFormat);
}

QString ExactSizeText(double bytes) {
  bytes = std::fabs(bytes);
  if (bytes >= 1e15) return Qs(FormatNumber(bytes)) + QStringLiteral(" bytes");
  return QLocale().toString(static_cast<qlonglong>(bytes)) + QStringLiteral(" bytes");
}

QString AttributeText(int32_t attr) {
  QString out;
  if (attr & kAttrReadOnly) out += QLatin1Char('R');
  if (attr & kAttrHidden) out += QLatin1Char('H');
  if (attr & kAttrDirectory) out += QLatin1Char('D');
  if (attr & kAttrArchive) out += QLatin1Char('A');
  if (attr & kAttrReparsePoint) out += QLatin1Char('L');
  if (attr & kAttrEncrypted) out += QLatin1Char('E');
  return out;
}

QString DateText(double ole) { return ole == 0 ? QString() : Qs(FormatGeneralDate(ole)); }

QString MediaTypeText(int32_t mediaType) {
  if (mediaType > 100) return QObject::tr("Audio CD");
  switch (mediaType) {
    case kMediaRemovable:
      return QObject::tr("Removable disk");
    case kMediaFixed:
      return QObject::tr("Fixed disk");
    case kMediaRemote:
      return QObject::tr("Network drive");
    case kMediaOptical:
      return QObject::tr("CD or DVD");
    case kMediaRam:
      return QObject::tr("RAM disk");
    default:
      return QObject::tr("Unknown");
  }
}

QString SerialText(int32_t serial) {
  const quint32 s = static_cast<quint32>(serial);
  return QStringLiteral("%1-%2")
      .arg(s >> 16, 4, 16, QLatin1Char('0'))
      .arg(s & 0xffffu, 4, 16, QLatin1Char('0'))
      .toUpper();
}

}  // namespace gorvan::ui
