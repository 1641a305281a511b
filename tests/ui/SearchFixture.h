#pragma once
// The search window's tests: the main window with the search feature on a
// catalog, the window's controls by name, and gorvan-cli's answer to the
// same search as the oracle.
#include <QCheckBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QProcess>
#include <QPushButton>
#include <QTableView>
#include <QTreeView>

#include "ui/ExplorerFixture.h"
#include "ui/search/SearchFeature.h"
#include "ui/search/SearchResultsModel.h"
#include "ui/search/frmSearch.h"

namespace gorvan::test {

class SearchTest : public ExplorerTest {
 protected:
  SearchTest() { ui::RegisterSearch(hooks); }

  // The search window the command opened (the active document).
  ui::frmSearch* Open(const char* command = "mnuCdSearch") {
    Trigger(command);
    Idle();
    QMdiSubWindow* sub = window->documents()->activeSubWindow();
    return sub ? qobject_cast<ui::frmSearch*>(sub->widget()) : nullptr;
  }
  template <typename W>
  static W* Control(ui::frmSearch* form, const char* name) {
    W* w = form->findChild<W*>(QLatin1String(name));
    EXPECT_NE(w, nullptr) << name;
    return w;
  }
  static void Check(ui::frmSearch* form, const char* name, bool on) {
    Control<QCheckBox>(form, name)->setChecked(on);
  }
  static QAction* Popup(ui::frmSearch* form, const char* name) {
    QAction* a = form->popup()->findChild<QAction*>(QLatin1String(name));
    EXPECT_NE(a, nullptr) << name;
    return a;
  }
  // Types text and presses "&Search", then waits for the end.
  void Search(ui::frmSearch* form, const std::string& text) {
    Control<QLineEdit>(form, "fldSearchFor")->setText(QString::fromStdString(text));
    Control<QPushButton>(form, "btnOK")->click();
    ASSERT_TRUE(WaitFor([form] { return !form->searching(); }));
    Idle();
  }
  // The list's rows: the key, then the eight columns.
  static std::vector<std::vector<std::string>> Rows(ui::frmSearch* form) {
    std::vector<std::vector<std::string>> out;
    ui::SearchResultsModel* m = form->model();
    for (int r = 0; r < m->rowCount(); ++r) {
      const SearchResult& row = m->RowAt(r);
      out.push_back({row.Key(), row.fileName, row.cdName, row.path, row.date, row.size,
                     row.attributes, row.notes, row.internalDate});
    }
    return out;
  }
  // gorvan-cli's rows (tab-separated, unescaped) for the same search.
  static std::vector<std::vector<std::string>> Cli(const std::string& catalog,
                                                   const QStringList& args) {
    QProcess cli;
    cli.start(QStringLiteral(GORVAN_CLI_PATH),
              QStringList{QStringLiteral("-c"), QString::fromStdString(catalog),
                          QStringLiteral("search")} +
                  args);
    EXPECT_TRUE(cli.waitForFinished(60000));
    EXPECT_EQ(cli.exitCode(), 0) << cli.readAllStandardError().toStdString();
    std::vector<std::vector<std::string>> out;
    for (const QByteArray& raw : cli.readAllStandardOutput().split('\n')) {
      std::string line = raw.toStdString();
      if (!line.empty() && line.back() == '\r') line.pop_back();
      if (line.empty()) continue;
      std::vector<std::string> fields(1);
      for (size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '\t') {
          fields.emplace_back();
        } else if (line[i] == '\\' && i + 1 < line.size()) {
          const char c = line[++i];
          fields.back() += c == 't' ? '\t' : c == 'n' ? '\n' : c == 'r' ? '\r' : c;
        } else {
          fields.back() += line[i];
        }
      }
      out.push_back(fields);
    }
    return out;
  }
};

}  // namespace gorvan::test
