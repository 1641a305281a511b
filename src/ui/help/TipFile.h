#pragma once
// TipFile: the tips of the tip of the day, from "Gorvan.tip" (tips/Gorvan.tip
// in the resource folder): UTF-8 text, one tip a line; empty lines and lines
// beginning with "#" are skipped. Only the first 256 KiB and 1000 tips are
// read and a tip is cut at 1000 characters, so a huge file costs little. A
// missing, unreadable or empty file gives one tip of our own and a problem
// text.
//
// Thread contract: any thread.

#include <QString>
#include <QStringList>

namespace gorvan::ui {

class TipFile {
 public:
  static constexpr qint64 kMaxBytes = 256 * 1024;
  static constexpr int kMaxTips = 1000;
  static constexpr int kMaxTipLength = 1000;

  // Reads path. Never empty afterwards.
  void Load(const QString& path);
  const QStringList& tips() const { return tips_; }
  // "" when the file was read; else why the built-in tip is shown.
  const QString& problem() const { return problem_; }

 private:
  QStringList tips_;
  QString problem_;
};

}  // namespace gorvan::ui
