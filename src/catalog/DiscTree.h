#pragma once
// DiscTree: the folder tree of one disc, built from the disc's flat folder
// chain. The chain holds every folder of a disc at every depth; only the texts
// tell the tree: a folder's full path is its parent path, a `\` and its name.
// Nodes are indices 0..size()-1 in the order the chain stores the folders.
//
// How parents are found:
// - Paths are compared byte for byte as stored (case matters) after leading and
//   trailing `\` are dropped from the parent path and from the full path, so
//   "\", "" and "\x\" name the volume root and "x" alike.
// - A folder's parent is the most recent folder stored before it whose full
//   path equals its parent path. When none is stored before it, the first such
//   folder stored after it, unless that is the folder itself (a folder without
//   a name has its parent path as its full path).
// - The root is the first folder of the chain that has no parent by that rule
//   (for a disc written by a scan, the first folder). Every other folder without
//   one hangs under the root and counts as an orphan.
// - A parent's full path is never longer than its child's, and two folders of
//   equal full path are only ever linked backwards in the chain, so the links
//   cannot form a cycle: every walk of the tree ends.
//
// Memory: 24 bytes a folder, its name, and 4 bytes a child link; building
// adds about 30 bytes a folder for a while (50,000 folders: under 3 MiB).
//
// Thread contract: once built the tree is a plain value (no pointers into the
// catalog), safe to read from any number of threads. Build reads the catalog,
// so it runs on the thread that owns the CatalogFile it is given.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "catalog/CatalogFile.h"
#include "catalog/Status.h"

namespace gorvan {

class DiscTree {
 public:
  static constexpr int32_t kNone = -1;

  // Reads the folder chain of disc discId once (path and name of each folder)
  // and resolves the tree in memory; what the tree held before is dropped.
  // On success returns OK. On failure (discId is no disc, a link or text of the
  // chain is damaged, the chain loops: longer than the file could hold, or
  // holding more text than the file) returns the catalog's error, which the
  // file also keeps; the tree then holds the folders read before the failure.
  [[nodiscard]] Status Build(CatalogFile* file, int32_t discId);

  int32_t discId() const { return discId_; }
  bool empty() const { return nodes_.empty(); }
  int32_t size() const { return static_cast<int32_t>(nodes_.size()); }
  // The root's index: 0 for a disc written by a scan; kNone when empty.
  int32_t root() const { return empty() ? kNone : root_; }
  // Folders whose parent path names no folder of the disc (hung under the root).
  int32_t orphans() const { return orphans_; }

  // REQUIRES for the node accessors: 0 <= node < size().
  int32_t folderId(int32_t node) const { return nodes_[node].folderId; }
  // The folder's name converted as ReadText converts it ("" for the root of a
  // whole volume).
  std::string_view name(int32_t node) const {
    return std::string_view(names_).substr(nodes_[node].nameAt, nodes_[node].nameSize);
  }
  int32_t parent(int32_t node) const { return nodes_[node].parent; }  // kNone for the root
  int32_t depth(int32_t node) const { return nodes_[node].depth; }    // 0 for the root
  int32_t childCount(int32_t node) const { return nodes_[node].childEnd - ChildStart(node); }
  bool hasChildren(int32_t node) const { return childCount(node) > 0; }
  // The node's children in stored order.
  std::span<const int32_t> children(int32_t node) const {
    return std::span<const int32_t>(children_).subspan(ChildStart(node), childCount(node));
  }
  // The node of a folder id, kNone when the disc has no such folder. Linear.
  int32_t Find(int32_t folderId) const;

  // Calls visit(node) for every node reachable from the root, depth first, the
  // root first and children in stored order.
  template <typename Visit>
  void VisitDepthFirst(Visit&& visit) const {
    if (empty()) return;
    std::vector<int32_t> stack{root_};
    while (!stack.empty()) {
      const int32_t node = stack.back();
      stack.pop_back();
      visit(node);
      const std::span<const int32_t> kids = children(node);
      stack.insert(stack.end(), kids.rbegin(), kids.rend());
    }
  }

  // Heap bytes the tree holds.
  size_t MemoryBytes() const {
    return nodes_.capacity() * sizeof(Node) + children_.capacity() * sizeof(int32_t) +
           names_.capacity();
  }

 private:
  class Builder;
  struct Node {
    int32_t folderId;
    int32_t parent;
    int32_t childEnd;  // into children_; the children start at the previous node's end
    int32_t depth;
    uint32_t nameAt;  // into names_
    uint32_t nameSize;
  };

  int32_t ChildStart(int32_t node) const { return node == 0 ? 0 : nodes_[node - 1].childEnd; }
  // The root, orphans, children and depths from the parents found; scratch is
  // memory to reuse.
  void Resolve(std::vector<int32_t>* scratch);

  std::vector<Node> nodes_;
  std::vector<int32_t> children_;
  std::string names_;
  int32_t root_ = 0;
  int32_t orphans_ = 0;
  int32_t discId_ = 0;
};

}  // namespace gorvan
