#include "catalog/CatalogRules.h"

namespace gorvan {

std::string CatalogRules::CheckMove(NodeKind dragged, NodeKind target,
                                    bool targetIsOwnDescendant) {
  if (dragged == NodeKind::kFolder || dragged == NodeKind::kFile ||
      dragged == NodeKind::kArchiveMember) {
    return "Drag && Drop is only avaiable for the containers, and not the individual files or "
           "directories";
  }
  if (dragged != NodeKind::kDisc && dragged != NodeKind::kCategory) {
    return "You can only move a CD or folder between categories";
  }
  if (dragged == NodeKind::kCategory && targetIsOwnDescendant) {
    return "A node can't be made a child of its own children.";
  }
  // A category or a disc may be dropped on a category or on the catalog (top level).
  if (target != NodeKind::kCategory && target != NodeKind::kCatalog) {
    return "You can only move a CD or folder between categories";
  }
  return {};
}

std::string CatalogRules::CheckDelete(NodeKind selected, bool categoryHasChildren) {
  if (selected == NodeKind::kNone) return "You have to select something to delete";
  if (selected != NodeKind::kCategory && selected != NodeKind::kDisc) {
    return "You can only delete either a Category or a Folder Container";
  }
  if (selected == NodeKind::kCategory && categoryHasChildren) {
    return "Cannot delete category because it contains children!! remove all children and try "
           "again";
  }
  return {};
}

std::string CatalogRules::CheckRename(NodeKind selected) {
  switch (selected) {
    case NodeKind::kCategory:
    case NodeKind::kDisc:
    case NodeKind::kFolder:
    case NodeKind::kCatalog:
      return {};
    default:
      return "You can only edit container names, cd names, folder names or the data name";
  }
}

std::string CatalogRules::CheckEdit(NodeKind selected) {
  if (selected == NodeKind::kDisc || selected == NodeKind::kFolder) return {};
  return "You can only edit a cd or a folder from this option";
}

std::string CatalogRules::CheckRescan(NodeKind selected) {
  if (selected == NodeKind::kDisc || selected == NodeKind::kFolder) return {};
  return "You can only rescan a cd or a folder from this option";
}

}  // namespace gorvan
