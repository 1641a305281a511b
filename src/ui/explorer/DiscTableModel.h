#pragma once
// DiscTableModel: the traditional view's table of every disc — name,
// category, label, media type, folders, files, total size, free space, last
// scanned and notes — read on the view loader's thread and sorted in the
// model.
//
// Thread contract: the GUI thread.

#include <QAbstractTableModel>
#include <QFont>
#include <QFontMetrics>
#include <vector>

#include "ui/session/CatalogItem.h"
#include "ui/session/CatalogRows.h"

namespace gorvan::ui {

class CatalogSession;

class DiscTableModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  enum Column {
    kName,
    kCategory,
    kLabel,
    kMediaType,
    kFolders,
    kFiles,
    kTotalSize,
    kFreeSpace,
    kLastScanned,
    kNotes,
    kColumnCount
  };

  explicit DiscTableModel(CatalogSession& session, QObject* parent = nullptr);

  void Reload();
  void Clear();
  bool loaded() const { return loaded_; }
  const DiscRow* Disc(int row) const;
  const DiscRow* DiscById(int32_t id) const;
  CatalogItem Item(const QModelIndex& index) const;
  QModelIndex IndexOf(int32_t discId) const;
  void SetFont(const QFont& font);
  // Column widths that fit typical values in the given font.
  static std::vector<int> DefaultWidths(const QFontMetrics& metrics);

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  void sort(int column, Qt::SortOrder order) override;

 Q_SIGNALS:
  void reloaded();
  void renameRequested(const gorvan::ui::CatalogItem& item, const QString& name);

 private:
  struct Row {
    DiscRow disc;
    std::string category;  // the category's path, "" for none
  };
  void Fill(CatalogSnapshot snapshot);
  void SortRows();

  CatalogSession& session_;
  std::vector<Row> rows_;
  std::vector<int32_t> order_;
  int sortColumn_ = kName;
  Qt::SortOrder sortOrder_ = Qt::AscendingOrder;
  QFont font_;
  bool fontSet_ = false;
  bool loaded_ = false;
};

}  // namespace gorvan::ui
