#pragma once
// CatalogRows: plain copies of catalog records that the views hold. A reader
// fills them on a worker thread; the GUI thread only ever sees these values,
// never a cursor. Texts are UTF-8 as the catalog gives them.

#include <cstdint>
#include <string>
#include <vector>

#include "catalog/CatalogRules.h"
#include "catalog/Status.h"

namespace gorvan::ui {

struct CategoryRow {
  int32_t id = 0;
  int32_t parent = 0;
  double created = 0;
  std::string name;
  std::string notes;
};

struct DiscRow {
  int32_t id = 0;
  int32_t category = 0;
  int32_t mediaType = 0;
  int32_t typeExt = 0;  // the media type reduced to an icon type
  int32_t folders = 0;
  int32_t files = 0;
  int32_t diskId = 0;
  int32_t bytesUsed = 0;
  double totalSize = 0;
  double freeSpace = 0;
  double lastScanned = 0;
  std::string name;    // as stored
  std::string artist;  // the audio artist ("AR"), "" when none
  std::string notes;
  std::string label;
  std::string basePath;
  std::string iconKey;  // the stored key when known, else the media type's
  std::string extra;

  // The name the views show: the name, " - " and the artist when there is one.
  std::string DisplayName() const { return artist.empty() ? name : name + " - " + artist; }
};

// The categories and discs of the catalog, in chain order.
struct CatalogSnapshot {
  std::string name;  // the catalog's name
  std::vector<CategoryRow> categories;
  std::vector<DiscRow> discs;
  Status status;  // not OK when a chain broke; the rows read before it are kept
};

// One row of a file list: a category, disc, folder, file or archive member.
struct EntryRow {
  NodeKind kind = NodeKind::kNone;
  int32_t id = 0;
  int32_t discId = 0;
  int32_t attr = 0;
  int32_t treeNode = -1;  // a folder's node in its disc's tree
  int32_t files = 0;      // a folder's files, all levels; a disc's files
  int32_t folders = 0;    // a folder's subfolders, all levels; a disc's folders
  double size = 0;
  double date = 0;
  bool archive = false;  // a file with archive members
  std::string name;
  std::string notes;
  std::string extra;
  std::string path;  // an archive member's path inside the archive; a disc's icon key
};

struct EntryRows {
  std::vector<EntryRow> rows;
  Status status;
};

}  // namespace gorvan::ui
