#include "ui/main/CommandHooks.h"

namespace gorvan::ui {

bool CommandHooks::Run(const QString& command, const CommandContext& context) const {
  auto it = handlers_.constFind(command);
  if (it == handlers_.constEnd()) return false;
  (*it)(context);
  return true;
}

const QStringList& CommandHooks::FeatureCommands() {
  static const QStringList commands = {
      QStringLiteral("mnuFileExport"),
      QStringLiteral("mnuFilePreview"),
      QStringLiteral("mnuCdAdd"),
      QStringLiteral("mnuCdAddNoScan"),
      QStringLiteral("mnuCdRescan"),
      QStringLiteral("mnuCdSearch"),
      QStringLiteral("mnuCdEject"),
      QStringLiteral("mnuViewOptions"),
      QStringLiteral("mnuViewIconMaint"),
      QStringLiteral("mnuViewSkinChange"),
      QStringLiteral("mnuViewSkinDesigner"),
      QStringLiteral("mnuHelpContents"),
      QStringLiteral("mnuHelpTip"),
      QStringLiteral("mnuHelpSendError"),
      QStringLiteral("mnuHelpUpdate"),
      QStringLiteral("mnuHelpAbout"),
  };
  return commands;
}

}  // namespace gorvan::ui
