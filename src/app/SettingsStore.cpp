#include "app/SettingsStore.h"

#include <QSettings>
#include <QString>

#include <algorithm>
#include <cctype>

#include "catalog/ErrorReporter.h"

namespace gorvan {
namespace {

QSettings Open() {
  return QSettings(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("Gorvan"),
                   QStringLiteral("Gorvan"));
}

QString KeyOf(const std::string& section, const std::string& key) {
  return QString::fromStdString(section) + QLatin1Char('/') + QString::fromStdString(key);
}

bool Synced(QSettings& s, const std::string& routine) {
  s.sync();
  if (s.status() == QSettings::NoError) return true;
  ReportError(routine, 75, "The settings could not be written to " + s.fileName().toStdString(),
              3);
  return false;
}

}  // namespace

std::string SettingsStore::GetText(const std::string& section, const std::string& key,
                                   const std::string& defaultValue) {
  QSettings s = Open();
  const QVariant v = s.value(KeyOf(section, key));
  if (!v.isValid()) return defaultValue;
  // A damaged or hand-edited file can hold lists or other types: they read as
  // their text where Qt has one, else as the default.
  if (!v.canConvert<QString>()) return defaultValue;
  return v.toString().toStdString();
}

bool SettingsStore::PutText(const std::string& section, const std::string& key,
                            const std::string& value) {
  QSettings s = Open();
  s.setValue(KeyOf(section, key), QString::fromStdString(value));
  return Synced(s, "SettingsStore.PutText");
}

bool SettingsStore::GetBool(const std::string& section, const std::string& key,
                            bool defaultValue) {
  return ParseBool(GetText(section, key, BoolText(defaultValue)));
}

bool SettingsStore::PutBool(const std::string& section, const std::string& key, bool value) {
  return PutText(section, key, BoolText(value));
}

bool SettingsStore::Remove(const std::string& section, const std::string& key) {
  QSettings s = Open();
  s.remove(KeyOf(section, key));
  return Synced(s, "SettingsStore.Remove");
}

bool SettingsStore::ParseBool(const std::string& text) {
  std::string lower = text;
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return lower == "true";
}

std::vector<std::pair<std::string, std::string>> SettingsStore::List() {
  QSettings s = Open();
  std::vector<std::pair<std::string, std::string>> out;
  for (const QString& key : s.allKeys()) {
    const QVariant v = s.value(key);
    out.emplace_back(key.toStdString(),
                     v.canConvert<QString>() ? v.toString().toStdString() : std::string());
  }
  return out;
}

std::string SettingsStore::FilePath() { return Open().fileName().toStdString(); }

}  // namespace gorvan
