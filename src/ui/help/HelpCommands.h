#pragma once
// HelpCommands: the Help menu — mnuHelpContents (the manual in the browser),
// mnuHelpTip (tip of the day), mnuHelpSendError (the send dialog),
// mnuHelpUpdate (the interactive version check) and mnuHelpAbout — and the
// tip of the day at start.
//
// Thread contract: the GUI thread.

namespace gorvan::ui {

class CommandHooks;
class frmMenu;

void RegisterHelpCommands(CommandHooks& hooks);
// Shows the tip of the day when the user wants one at start.
void ShowTipAtStart(frmMenu& window);

}  // namespace gorvan::ui
