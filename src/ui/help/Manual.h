#pragma once
// Manual: the HTML manual Gorvan ships (help/index.html in the resource
// folder), opened in the user's browser (mnuHelpContents). A manual that is
// missing, or a desktop that starts no browser, is told through the prompt.
//
// Thread contract: the GUI thread.

#include <QString>
#include <QUrl>
#include <functional>

namespace gorvan {
class Prompt;
}

namespace gorvan::ui {

class Manual {
 public:
  // Opens the manual's first page; false when it could not be shown (the
  // user was told why).
  static bool Open(Prompt& prompt);
  // Opens the manual page at path ("" or a file that is gone: not installed).
  static bool Open(Prompt& prompt, const QString& path);
  // The manual's first page; "" when it is not installed.
  static QString Path();
  // Who opens addresses: the desktop's browser unless a test says otherwise.
  using Opener = std::function<bool(const QUrl&)>;
  static void SetOpener(Opener opener);
};

}  // namespace gorvan::ui
