#pragma once
// The search feature's commands: mnuCdSearch (and the pop-ups that run it,
// popExpTreeSearch, popExpListSearch, popCdSearch, popBrowse1Search) opens a
// search window as a document of the main window; opened on a category it
// searches that category.

namespace gorvan::ui {

class CommandHooks;

void RegisterSearch(CommandHooks& hooks);

}  // namespace gorvan::ui
