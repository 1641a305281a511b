// gorvan-cli category, disc, folder, file and password.
#include <CLI/CLI.hpp>

#include <iostream>

#include "catalog/CatalogEditor.h"
#include "catalog/PasswordCheck.h"
#include "cli/CliContext.h"
#include "cli/Commands.h"

namespace gorvan::cli {
namespace {

// Opens the catalog, runs edit on a CatalogEditor, and turns the outcome into
// an exit code.
template <typename Edit>
int RunEdit(CliContext& ctx, Edit edit) {
  int code = 0;
  classData* data = ctx.Open(&code);
  if (!data) return code;
  CatalogEditor editor(data);
  const Status s = edit(editor);
  if (!s.ok()) return ctx.Fail(s);
  return ctx.Finish();
}

struct EditArgs {
  int32_t id = 0;
  int32_t target = 0;
  std::string text;
};

int SetPassword(CliContext& ctx, const std::string& given) {
  int code = 0;
  classData* data = ctx.Open(&code);
  if (!data) return code;
  std::string new1 = given;
  std::string new2 = given;
  if (given.empty()) {
    if (!TerminalPrompt::ReadSecret("New password: ", &new1) ||
        !TerminalPrompt::ReadSecret("New password again: ", &new2)) {
      return ctx.Fail("give the new password with --new, or run on a terminal", kExitUsage);
    }
  }
  const std::string current = data->GetDataPassword();
  std::string chosen;
  const auto result = PasswordCheck::ChangePassword(current, new1, new2, current, &chosen);
  if (result != PasswordCheck::Result::kPassed) return ctx.Fail(PasswordCheck::Message(result));
  data->SetDataPassword(chosen);
  return ctx.Finish();
}

}  // namespace

void AddEditCommands(CLI::App& app, CliContext& ctx, int* result) {
  static EditArgs a;

  auto* category = app.add_subcommand("category", "Add, remove, rename or move categories");
  category->require_subcommand(1);
  auto* catAdd = category->add_subcommand("add", "Add a category; prints its id");
  catAdd->add_option("NAME", a.text, "Its name (\"New Category\" when empty)");
  catAdd->add_option("--parent", a.target, "The parent category (0: top level)");
  catAdd->callback([&ctx, result] {
    *result = RunEdit(ctx, [](CatalogEditor& e) {
      int32_t id = 0;
      Status s = e.AddCategory(a.text, a.target, &id);
      if (s.ok()) std::cout << id << '\n';
      return s;
    });
  });
  auto* catRm = category->add_subcommand("rm", "Remove a category without children");
  catRm->add_option("ID", a.id)->required();
  catRm->callback([&ctx, result] {
    *result = RunEdit(ctx, [](CatalogEditor& e) { return e.DeleteCategory(a.id); });
  });
  auto* catRename = category->add_subcommand("rename", "Rename a category");
  catRename->add_option("ID", a.id)->required();
  catRename->add_option("NAME", a.text)->required();
  catRename->callback([&ctx, result] {
    *result = RunEdit(ctx, [](CatalogEditor& e) { return e.RenameCategory(a.id, a.text); });
  });
  auto* catMove = category->add_subcommand("move", "Move a category under another (0: top level)");
  catMove->add_option("ID", a.id)->required();
  catMove->add_option("PARENT", a.target)->required();
  catMove->callback([&ctx, result] {
    *result = RunEdit(ctx, [](CatalogEditor& e) { return e.MoveCategory(a.id, a.target); });
  });

  auto* disc = app.add_subcommand("disc", "Remove, rename, annotate or move discs");
  disc->require_subcommand(1);
  auto* discRm = disc->add_subcommand("rm", "Remove a disc from the catalog");
  discRm->add_option("ID", a.id)->required();
  discRm->callback([&ctx, result] {
    *result = RunEdit(ctx, [](CatalogEditor& e) { return e.DeleteDisc(a.id); });
  });
  auto* discRename = disc->add_subcommand("rename", "Rename a disc");
  discRename->add_option("ID", a.id)->required();
  discRename->add_option("NAME", a.text)->required();
  discRename->callback([&ctx, result] {
    *result = RunEdit(ctx, [](CatalogEditor& e) { return e.RenameDisc(a.id, a.text); });
  });
  auto* discNotes = disc->add_subcommand("notes", "Set a disc's notes");
  discNotes->add_option("ID", a.id)->required();
  discNotes->add_option("TEXT", a.text)->required();
  discNotes->callback([&ctx, result] {
    *result = RunEdit(ctx, [](CatalogEditor& e) { return e.SetDiscNotes(a.id, a.text); });
  });
  auto* discMove = disc->add_subcommand("move", "File a disc under a category (0: none)");
  discMove->add_option("ID", a.id)->required();
  discMove->add_option("CATEGORY", a.target)->required();
  discMove->callback([&ctx, result] {
    *result = RunEdit(ctx, [](CatalogEditor& e) { return e.MoveDisc(a.id, a.target); });
  });

  auto* folder = app.add_subcommand("folder", "Folders of a disc");
  folder->require_subcommand(1);
  auto* folderNotes = folder->add_subcommand("notes", "Set a folder's notes");
  folderNotes->add_option("ID", a.id)->required();
  folderNotes->add_option("TEXT", a.text)->required();
  folderNotes->callback([&ctx, result] {
    *result = RunEdit(ctx, [](CatalogEditor& e) { return e.SetFolderNotes(a.id, a.text); });
  });

  auto* file = app.add_subcommand("file", "Files of a folder");
  file->require_subcommand(1);
  auto* fileNotes = file->add_subcommand("notes", "Set a file's notes");
  fileNotes->add_option("ID", a.id)->required();
  fileNotes->add_option("TEXT", a.text)->required();
  fileNotes->callback([&ctx, result] {
    *result = RunEdit(ctx, [](CatalogEditor& e) { return e.SetFileNotes(a.id, a.text); });
  });

  auto* password = app.add_subcommand("password", "Set or clear the catalog password");
  password->require_subcommand(1);
  auto* pwSet = password->add_subcommand("set", "Set a new password (asked twice on the terminal)");
  pwSet->add_option("--new", a.text, "The new password (instead of asking)");
  pwSet->callback([&ctx, result] { *result = SetPassword(ctx, a.text); });
  password->add_subcommand("clear", "Remove the password")->callback([&ctx, result] {
    int code = 0;
    classData* data = ctx.Open(&code);
    if (!data) {
      *result = code;
      return;
    }
    data->SetDataPassword("");
    *result = ctx.Finish();
  });
}

}  // namespace gorvan::cli
