#pragma once
// CatalogRules: what may be moved, deleted, renamed, edited and rescanned in
// the catalog tree, with the messages the user sees when it may not. The
// desktop program and the command line ask these same functions; each returns
// "" when the action is allowed, otherwise the message.

#include <string>

namespace gorvan {

// The kinds of item the catalog tree shows. A disc is a scanned CD or a
// scanned folder ("folder container"); a folder is a directory on a disc.
enum class NodeKind { kNone, kCatalog, kCategory, kDisc, kFolder, kFile, kArchiveMember };

inline constexpr const char* kNewCategoryName = "New Category";
inline constexpr const char* kRemoveCategoryTitle = "Remove category";

class CatalogRules {
 public:
  // Dragging one item; target is where it is dropped. targetIsOwnDescendant is
  // true when a category is dropped onto itself or one of its descendants.
  static std::string CheckMove(NodeKind dragged, NodeKind target, bool targetIsOwnDescendant);
  static std::string CheckDelete(NodeKind selected, bool categoryHasChildren);
  static std::string CheckRename(NodeKind selected);
  static std::string CheckEdit(NodeKind selected);
  static std::string CheckRescan(NodeKind selected);
};

}  // namespace gorvan
