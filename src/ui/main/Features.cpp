// The features built into this program register their commands here, one
// line each (see CommandHooks.h).
#include "ui/export/frmExport.h"
#include "ui/main/CommandHooks.h"
#include "ui/options/OptionsCommands.h"
#include "ui/reports/frmPreview.h"
#include "ui/scan/ScanFeature.h"
#include "ui/search/SearchFeature.h"

namespace gorvan::ui {

void RegisterFeatures(CommandHooks& hooks) {
  ScanFeature::Register(hooks);
  RegisterSearch(hooks);
  RegisterExport(hooks);
  RegisterReports(hooks);
  RegisterOptionsCommands(hooks);
}

}  // namespace gorvan::ui
