#pragma once
// OptionsCommands: the commands of the options, looks and help feature —
// mnuViewOptions, mnuViewIconMaint, mnuViewSkinChange, mnuViewSkinDesigner,
// mnuHelpContents, mnuHelpTip, mnuHelpSendError, mnuHelpUpdate, mnuHelpAbout —
// and what the feature does when the program starts.
//
// Thread contract: the GUI thread.

namespace gorvan {
class Prompt;
}

namespace gorvan::ui {

class CommandHooks;
class frmMenu;

// Registers the feature's commands (Features.cpp).
void RegisterOptionsCommands(CommandHooks& hooks);

// Before the main window is built: remembers the desktop's look and applies
// the skin of the settings record, so the window shows in it at once.
// Problems are told through prompt.
void ApplyLooksAtStart(Prompt& prompt);
// After the main window showed: its background, the icon map's icons, and
// the tip of the day when the user wants one at start.
void OptionsWindowStarted(frmMenu& window);

// Re-applies skin, font and background to the window (after the options
// dialog, the skin chooser or the skin designer).
void ReapplyLooks(frmMenu& window);

}  // namespace gorvan::ui
