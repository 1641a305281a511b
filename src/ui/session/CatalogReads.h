#pragma once
// CatalogReads: what the views read from a catalog, as plain rows. Each runs on
// the thread that owns the catalog it is given (a view loader's reader) and
// ends early, with what it read so far, when stop is asked. A damaged chain
// ends the read with the catalog's error in the result's status; the rows
// read before it are kept.

#include <stop_token>
#include <utility>
#include <vector>

#include "catalog/classData.h"
#include "ui/session/CatalogRows.h"

namespace gorvan::ui {

class CatalogReads {
 public:
  // Every category and disc, in chain order.
  static CatalogSnapshot Catalog(classData& data, const std::stop_token& stop);
  // One disc record; NotFound when id is no disc.
  static Status Disc(classData& data, int32_t id, DiscRow* out);

  // The rows of the given folders (id and tree node each) followed by the
  // files of folder folderId (0: no files), in chain order.
  static EntryRows Folder(classData& data, int32_t folderId,
                          const std::vector<std::pair<int32_t, int32_t>>& subfolders,
                          const std::stop_token& stop);
  // The members of archive file archiveId, in chain order.
  static EntryRows Members(classData& data, int32_t archiveId, const std::stop_token& stop);
  // One folder, file or archive member record as a row; NotFound when id is
  // not a record of that kind.
  static Status Entry(classData& data, NodeKind kind, int32_t id, EntryRow* out);
};

}  // namespace gorvan::ui
