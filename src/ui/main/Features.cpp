// The features built into this program register their commands here, one
// line each (see CommandHooks.h). Scanning, searching and exporting, and the
// options, looks and help dialogs add theirs as they are built.
#include "ui/export/frmExport.h"
#include "ui/main/CommandHooks.h"
#include "ui/options/OptionsCommands.h"
#include "ui/reports/frmPreview.h"
#include "ui/scan/ScanFeature.h"

namespace gorvan::ui {

void RegisterFeatures(CommandHooks& hooks) {
  ScanFeature::Register(hooks);
  RegisterExport(hooks);
  RegisterReports(hooks);
  RegisterOptionsCommands(hooks);
}

}  // namespace gorvan::ui
