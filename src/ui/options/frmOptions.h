#pragma once
// frmOptions: the options dialog (mnuViewOptions). It edits a copy of the
// settings record on six tabs — General, Scanning and audio CDs, Disc lookup,
// Prompts, Looks, Integration — each control bound to its settings key. OK
// saves the whole record in the save routine's order (which also installs or
// removes the folder actions), the e-mail address of the FreeDB hello
// ("Defaults"/"UserEmail") and the interface font ("Fonts"/"Default"), makes
// the copy the program's record and emits applied() so the window re-applies
// skin, background and font. Cancel changes nothing.
//
// The Test button of the disc lookup tab looks a well-known audio disc up
// through the sources as the tab stands (not yet saved), on a worker thread;
// the button stops a running test, and closing the dialog stops it too.
//
// Thread contract: the GUI thread.

#include <QDialog>
#include <QHash>
#include <functional>

#include "app/SettingsRecord.h"
#include "audio/DiscLookup.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTabWidget;

namespace gorvan {
class ShellIntegration;
}

namespace gorvan::ui {

class BackgroundTask;

// The table of contents of the disc the Test button looks up (13 tracks,
// FreeDB id a80efa0d), and its id.
inline constexpr const char* kTestDiscContents =
    "150 20398 35018 51204 70562 88773 107150 121419 139002 158387 174993 192091 220888 287700";
inline constexpr const char* kTestDiscId = "a80efa0d";

class frmOptions : public QDialog {
  Q_OBJECT

 public:
  // settings: the program's record, replaced on OK. shell: applied on OK.
  frmOptions(SettingsRecord& settings, const ShellIntegration& shell, QWidget* parent = nullptr);
  ~frmOptions() override;

  // The control bound to a settings key ("lNotifyBackup", "FreeDbUrl", ...;
  // "UserEmail" for the hello's address); nullptr for a key not shown.
  QWidget* control(const QString& key) const { return controls_.value(key); }
  // The keys the dialog shows, in tab order.
  QStringList keys() const { return order_; }
  QTabWidget* tabs() const { return tabs_; }
  // The transport of the Test button (tests answer from recordings).
  void SetLookupFetch(HttpFetch fetch) { fetch_ = std::move(fetch); }
  // What the Test button last reported.
  QString testResult() const;
  bool testRunning() const;

  // The record as the controls stand.
  SettingsRecord Edited() const;

 Q_SIGNALS:
  // OK saved the settings; the window re-applies what depends on them.
  void applied();

 private:
  struct Binding {
    std::function<void(const SettingsRecord&)> load;
    std::function<void(SettingsRecord&)> save;
  };

  QWidget* GeneralTab();
  QWidget* ScanningTab();
  QWidget* LookupTab();
  QWidget* PromptsTab();
  QWidget* LooksTab();
  QWidget* IntegrationTab();

  QCheckBox* Check(const char* key, const QString& caption);
  QLineEdit* Text(const char* key, const QString& placeholder = {});
  QWidget* Colour(const char* key);
  void Bind(const QString& key, QWidget* widget, Binding binding);
  void UpdateEnabled();
  void Accept();
  void RunTest();

  SettingsRecord& settings_;
  const ShellIntegration& shell_;
  QTabWidget* tabs_;
  QHash<QString, QWidget*> controls_;
  QStringList order_;
  std::vector<Binding> bindings_;
  HttpFetch fetch_;
  BackgroundTask* test_;
  QPushButton* testButton_ = nullptr;
  QLabel* testResult_ = nullptr;
};

}  // namespace gorvan::ui
