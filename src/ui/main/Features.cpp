// The features built into this program register their commands here, one
// line each (see CommandHooks.h). Scanning, searching and exporting, and the
// options, looks and help dialogs add theirs as they are built.
#include "ui/main/CommandHooks.h"
#include "ui/search/SearchFeature.h"

namespace gorvan::ui {

void RegisterFeatures(CommandHooks& hooks) { RegisterSearch(hooks); }

}  // namespace gorvan::ui
