#include "ui/widgets/QtPrompt.h"

#include <QFileDialog>
#include <QInputDialog>

#include "ui/dialogs/frmPassword.h"
#include "ui/widgets/PromptBox.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {

PromptReply QtPrompt::Ask(const PromptRequest& request) {
  PromptBox box(request, parent_);
  box.exec();
  return box.reply();
}

bool QtPrompt::AskText(const std::string& title, const std::string& label, bool hidden,
                       std::string* text) {
  bool ok = false;
  const QString answer = QInputDialog::getText(
      parent_, title.empty() ? QStringLiteral("Gorvan") : Qs(title), Qs(label),
      hidden ? QLineEdit::Password : QLineEdit::Normal, Qs(*text), &ok);
  if (ok) *text = Std(answer);
  return ok;
}

QString QtPrompt::QtFilter(const std::string& filter) {
  const QStringList parts = Qs(filter).split(QLatin1Char('|'));
  QStringList entries;
  for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
    QString description = parts[i].trimmed();
    const QString pattern = QString(parts[i + 1]).replace(QLatin1Char(';'), QLatin1Char(' '));
    if (!description.contains(QLatin1Char('(')))
      description += QStringLiteral(" (") + pattern + QLatin1Char(')');
    entries << description;
  }
  if (parts.size() == 1 && !parts[0].isEmpty()) entries << parts[0];
  return entries.join(QStringLiteral(";;"));
}

std::string QtPrompt::AskFile(const FileRequest& request) {
  QFileDialog dialog(parent_, Qs(request.title), Qs(request.startPath), QtFilter(request.filter));
  dialog.setObjectName(QStringLiteral("dlgFile"));
  dialog.setAcceptMode(request.save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
  dialog.setFileMode(request.save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
  if (!request.defaultExtension.empty()) dialog.setDefaultSuffix(Qs(request.defaultExtension));
  const QStringList filters = QtFilter(request.filter).split(QStringLiteral(";;"));
  if (request.filterIndex > 0 && request.filterIndex < filters.size())
    dialog.selectNameFilter(filters[request.filterIndex]);
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return {};
  return Std(dialog.selectedFiles().front());
}

bool QtPrompt::AskPassword(bool change, const PasswordJudge& judge) {
  frmPassword dialog(change, judge, parent_);
  return dialog.exec() == QDialog::Accepted;
}

}  // namespace gorvan::ui
