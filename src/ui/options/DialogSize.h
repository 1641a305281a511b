#pragma once
// DialogSize: the size a dialog of this feature keeps between uses, in
// "Defaults" under its objectName followed by "_width" and "_height", while
// "RetainSize" is on. Keep restores the stored size now (the dialog's own
// size hint is the default and the minimum) and saves it when the dialog
// finishes.
//
// Thread contract: the GUI thread.

class QDialog;

namespace gorvan::ui {

class DialogSize {
 public:
  static void Keep(QDialog* dialog);
};

}  // namespace gorvan::ui
