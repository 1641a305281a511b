#pragma once
// UiText: how catalog text (UTF-8 std::string) becomes text on the screen and
// back. Bytes that are not UTF-8 show as replacement characters; a text that
// is to sit on one row of a view has its line breaks and tabs shown as
// symbols and is cut to a length a row can show, so that a name of any size
// or shape never breaks a view's layout.

#include <QString>
#include <string>
#include <string_view>

namespace gorvan::ui {

// The longest text a row of a view shows; the whole text is edited.
inline constexpr qsizetype kMaxRowText = 1000;

inline QString Qs(std::string_view utf8) {
  return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}
inline QString Qs(const char* utf8) { return QString::fromUtf8(utf8); }
inline std::string Std(const QString& text) { return text.toStdString(); }

// One row's text: line breaks as "⏎", tabs as "→", other control characters
// as the replacement character, cut to kMaxRowText characters with "…".
QString RowText(std::string_view utf8);

// A size in bytes for a view: "1.5 MB" style, exact bytes below 1 KB.
QString SizeText(double bytes);
// A size with every byte: "1,234,567 bytes".
QString ExactSizeText(double bytes);
// The attribute letters of a folder or file: R H D A L (read-only, hidden,
// directory, archive, link).
QString AttributeText(int32_t attr);
// An OLE date in the general date format ("" for 0).
QString DateText(double ole);
// A disc's media type in words ("CD or DVD", "Audio CD", "Removable disk", ...).
QString MediaTypeText(int32_t mediaType);
// A volume serial number as its label shows it ("ABCD-1234").
QString SerialText(int32_t serial);

}  // namespace gorvan::ui
