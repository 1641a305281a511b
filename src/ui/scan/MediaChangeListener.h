#pragma once
// MediaChangeListener: what the main window does when a disc is inserted into
// or removed from a drive (cCdChanger's CDROMChanged, raised on the changer's
// thread and handed to the GUI thread). With "lEnableAutoInsert" on, an
// inserted disc is announced ("CD Inserted!!") with the offer to scan it,
// which opens the scan dialog on that drive; with "lNotifyCdChange" off the
// dialog opens without the question. A removed disc is announced ("CD
// Removed!!") while "lNotifyCdChange" is on. Nothing happens while a scan or
// another job runs, or while a scan dialog is open, or with no catalog open.
//
// Thread contract: the GUI thread (the changer's callback only posts).

#include <QObject>
#include <QString>
#include <memory>

namespace gorvan {
class cCdChanger;
}

namespace gorvan::ui {

class frmMenu;

inline constexpr const char* kCdInserted = "CD Inserted!!";
inline constexpr const char* kCdRemoved = "CD Removed!!";

class MediaChangeListener : public QObject {
  Q_OBJECT

 public:
  // Lives as long as window (its child), watching from the start.
  explicit MediaChangeListener(frmMenu& window);
  ~MediaChangeListener() override;

  // The window's handler of a change: kind 1 inserted, 2 removed.
  void oCdChanger_CDROMChanged(int kind, const QString& device);

 private:
  frmMenu& window_;
  std::unique_ptr<cCdChanger> changer_;
};

}  // namespace gorvan::ui
