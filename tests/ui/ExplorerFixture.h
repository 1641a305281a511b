#pragma once
// The explorer's tests: a sample catalog and the main window on it in the
// explorer view.
#include "catalog/ExtraData.h"
#include "ui/UiTestSupport.h"
#include "ui/explorer/CatalogTreeModel.h"
#include "ui/explorer/FileListModel.h"
#include "ui/explorer/frmBrowse2.h"
#include "ui/main/frmMenu.h"

namespace gorvan::test {

inline std::string Mp3Extra(const std::string& title, const std::string& artist) {
  return SetExtraValue(SetExtraValue("", kExtraMp3Title, title), kExtraMp3Artist, artist);
}

// Music > Jazz > "Kind of Blue - Miles" (an audio CD), Photos > Holiday (a
// folder disc with folders and an archive), and Backup at the top.
struct Sample {
  int32_t music, jazz, photos, album, holiday, backup;
  int32_t folderA, folderAB;
};

inline Sample BuildSample(const std::string& path,
                          const std::string& holidayBase = "/nonexistent/holiday") {
  Sample s{};
  CatalogBuilder b(path);
  s.music = b.Category("Music");
  s.jazz = b.Category("Jazz", s.music);
  s.photos = b.Category("Photos");
  s.album = b.Disc(
      {.name = "Kind of Blue",
       .category = s.jazz,
       .rootFiles = {{"So What", 0, 45000.5, 32, "", SetExtraValue("", kExtraTrackNumber, "1")},
                     {"Freddie Freeloader", 0, 45000.5, 32, "",
                      SetExtraValue("", kExtraTrackNumber, "2")}},
       .mediaType = 105,
       .extra =
           SetExtraValue(SetExtraValue("", kExtraAudioArtist, "Miles"), kExtraAudioAlbum, "KOB")});
  s.holiday = b.Disc(
      {.name = "Holiday",
       .category = s.photos,
       .rootFiles = {{"readme.txt", 12}},
       .folders = {{"a",
                    {{"photo10.jpg", 3000, 45001.5, 33, "the beach"},
                     {"photo9.jpg", 2000},
                     {"song.mp3", 5000000, 45000.5, 32, "", Mp3Extra("Blue in Green", "Bill")},
                     {"pack.zip", 100, 45000.5, 32, "", "", {{"inner.txt", 7}, {"deep.doc", 9}}}},
                    "folder notes"},
                   {"a\\b", {{"x.txt", 1}}},
                   {"c", {}}},
       .basePath = holidayBase});
  s.folderA = b.FolderId("a");
  s.folderAB = b.FolderId("a\\b");
  s.backup = b.Disc({.name = "Backup"});
  return s;
}

class ExplorerTest : public UiTest {
 protected:
  void StartOn(const std::string& catalog) {
    Start(catalog);
    browse = qobject_cast<ui::frmBrowse2*>(window->activeView());
    ASSERT_TRUE(browse);
    tree = browse->treeModel();
    list = browse->listModel();
  }
  // The child of parent whose shown text is text.
  QModelIndex Child(QAbstractItemModel* m, const QModelIndex& parent, const QString& text) {
    for (int r = 0; r < m->rowCount(parent); ++r) {
      const QModelIndex at = m->index(r, 0, parent);
      if (m->data(at, Qt::DisplayRole).toString() == text) return at;
    }
    return {};
  }
  QStringList Names(QAbstractItemModel* m, const QModelIndex& parent = {}, int column = 0) {
    QStringList out;
    for (int r = 0; r < m->rowCount(parent); ++r)
      out << m->data(m->index(r, column, parent), Qt::DisplayRole).toString();
    return out;
  }
  // Expands at as a user does: what leads to it is open already.
  void Expand(const QModelIndex& at) {
    std::vector<QModelIndex> chain;
    for (QModelIndex up = at; up.isValid(); up = up.parent()) chain.push_back(up);
    for (auto it = chain.rbegin(); it != chain.rend(); ++it) browse->tree()->expand(*it);
    Idle();
  }
  void Choose(const QModelIndex& at) {
    browse->tree()->setCurrentIndex(at);
    Idle();
  }
  QModelIndex Holiday() {
    return Child(tree, Child(tree, tree->CatalogIndex(), QStringLiteral("Photos")),
                 QStringLiteral("Holiday"));
  }
  QModelIndex FolderA() {
    Expand(Holiday());
    return Child(tree, Holiday(), QStringLiteral("a"));
  }

  ui::frmBrowse2* browse = nullptr;
  ui::CatalogTreeModel* tree = nullptr;
  ui::FileListModel* list = nullptr;
};

}  // namespace gorvan::test
