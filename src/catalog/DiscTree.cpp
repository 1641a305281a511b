#include "catalog/DiscTree.h"

#include <algorithm>
#include <bit>
#include <functional>

#include "catalog/TextCodec.h"
#include "catalog/classCd.h"

namespace gorvan {
namespace {

// A parent not yet found while reading: its path may be stored further on.
constexpr int32_t kLater = -2;

// Where a folder's full path lies in the key arena; its parent path is the
// first parentSize bytes of it.
struct KeyRef {
  uint32_t at;
  uint32_t size;
  uint32_t parentSize;
};

std::string_view TrimBackslashes(std::string_view s) {
  while (!s.empty() && s.front() == '\\') s.remove_prefix(1);
  while (!s.empty() && s.back() == '\\') s.remove_suffix(1);
  return s;
}

// The full paths read so far, each with the first and the most recent node
// that has it: open addressing with linear probing over a power-of-two table.
// Keys are not copied; they are read back from the arena through the first
// node of each entry.
class PathIndex {
 public:
  struct Entry {
    uint32_t tag;  // high bits of the hash, to skip most key comparisons
    int32_t first = DiscTree::kNone;
    int32_t latest = DiscTree::kNone;
  };

  PathIndex(size_t expected, const std::string& keys, const std::vector<KeyRef>& refs)
      : keys_(keys), refs_(refs), entries_(std::bit_ceil(std::max<size_t>(16, expected * 2))) {}

  const Entry* Find(std::string_view key) const {
    const Entry& e = entries_[Slot(key, Hash(key))];
    return e.first == DiscTree::kNone ? nullptr : &e;
  }

  void Add(std::string_view key, int32_t node) {
    if ((used_ + 1) * 2 > entries_.size()) Grow();
    const uint64_t h = Hash(key);
    Entry& e = entries_[Slot(key, h)];
    if (e.first == DiscTree::kNone) {
      e = Entry{static_cast<uint32_t>(h >> 32), node, node};
      ++used_;
    } else {
      e.latest = node;
    }
  }

 private:
  static uint64_t Hash(std::string_view key) { return std::hash<std::string_view>{}(key); }

  std::string_view KeyOf(int32_t node) const {
    const KeyRef& r = refs_[static_cast<size_t>(node)];
    return std::string_view(keys_).substr(r.at, r.size);
  }

  // The entry holding key, or the empty one where it would go.
  size_t Slot(std::string_view key, uint64_t h) const {
    const size_t mask = entries_.size() - 1;
    const auto tag = static_cast<uint32_t>(h >> 32);
    for (size_t i = h & mask;; i = (i + 1) & mask) {
      const Entry& e = entries_[i];
      if (e.first == DiscTree::kNone || (e.tag == tag && KeyOf(e.first) == key)) return i;
    }
  }

  // Only when the chain holds more folders than the disc's count said.
  void Grow() {
    std::vector<Entry> old(entries_.size() * 2);
    old.swap(entries_);
    for (const Entry& e : old) {
      if (e.first != DiscTree::kNone) {
        const std::string_view key = KeyOf(e.first);
        entries_[Slot(key, Hash(key))] = e;
      }
    }
  }

  const std::string& keys_;
  const std::vector<KeyRef>& refs_;
  std::vector<Entry> entries_;
  size_t used_ = 0;
};

}  // namespace

Status DiscTree::Build(CatalogFile* file, int32_t discId) {
  *this = DiscTree();
  discId_ = discId;
  classCd cd(file);
  if (!cd.recordGet(discId)) return file->error();

  // Room for the folders the disc counts (the count leaves out the root), but
  // never more than the file could hold, whatever a damaged count says.
  const auto expected = static_cast<size_t>(std::clamp<int64_t>(
      int64_t{cd.GetCdNumOfSubdirs()} + 1, 1, file->MaxChainLength(DirRecord::kSize)));
  nodes_.reserve(expected);
  names_.reserve(expected * 16);
  {
    std::string keys;
    keys.reserve(expected * 48);
    std::vector<KeyRef> refs;
    refs.reserve(expected);
    PathIndex index(expected, keys, refs);
    const bool utf8 = file->encoding() == TextEncoding::kUtf8;
    std::string decoded;
    // A text is never written over another, so a sound chain holds at most the
    // file's length of them. More means it loops or shares texts; the bound on
    // steps alone would let that hold up to the file's length squared.
    int64_t textBudget = file->Length();

    for (classDir& dir = cd.GetDirFirst(); !dir.isEof(); dir.MoveNext()) {
      const DirRecord& r = dir.record();
      // Each peeked view dies at the next read: copy it before the next peek.
      std::string_view text;
      if (!file->PeekRawText(r.path, &text)) break;
      const size_t at = keys.size();
      keys.append(TrimBackslashes(text));
      const size_t parentSize = keys.size() - at;
      if (!file->PeekRawText(r.name, &text)) break;
      textBudget -= int64_t{r.path.count} + int64_t{r.name.count};
      if (textBudget < 0) {
        file->Fail(Status::Corruption(
            "the folder chain holds more text than the file; it loops or shares its texts"));
        break;
      }
      const std::string_view own = TrimBackslashes(text);
      if (!own.empty()) {
        if (parentSize > 0) keys.push_back('\\');
        keys.append(own);
      }
      if (!utf8) {
        TextCodec::Windows1252ToUtf8(text, &decoded);
        text = decoded;
      }
      if (names_.size() + text.size() > UINT32_MAX) {
        file->Fail(Status::InvalidArgument("the folder names of this disc are too long to hold"));
        break;
      }
      const auto node = static_cast<int32_t>(nodes_.size());
      const std::string_view key = std::string_view(keys).substr(at);
      const PathIndex::Entry* parent = index.Find(key.substr(0, parentSize));
      nodes_.push_back(Node{r.id, parent ? parent->latest : kLater, 0, 0, 0,
                            static_cast<uint32_t>(names_.size()),
                            static_cast<uint32_t>(text.size())});
      names_.append(text);
      refs.push_back(KeyRef{static_cast<uint32_t>(at), static_cast<uint32_t>(key.size()),
                            static_cast<uint32_t>(parentSize)});
      index.Add(key, node);
    }

    // Folders stored before every folder of their parent path take the first
    // one after them; a folder is never its own parent.
    for (int32_t i = 0; i < size(); ++i) {
      if (nodes_[i].parent != kLater) continue;
      const KeyRef& r = refs[static_cast<size_t>(i)];
      const PathIndex::Entry* e = index.Find(std::string_view(keys).substr(r.at, r.parentSize));
      nodes_[i].parent = e && e->first != i ? e->first : kNone;
    }
  }
  Resolve();
  return file->ok() ? Status::OK() : file->error();
}

void DiscTree::Resolve() {
  const int32_t n = size();
  if (n == 0) return;
  root_ = 0;
  for (int32_t i = 0; i < n; ++i) {
    if (nodes_[i].parent == kNone) {
      root_ = i;
      break;
    }
  }
  nodes_[root_].parent = kNone;
  for (int32_t i = 0; i < n; ++i) {
    Node& node = nodes_[i];
    if (i == root_) continue;
    if (node.parent == kNone) {
      node.parent = root_;
      ++orphans_;
    }
    ++nodes_[node.parent].childCount;
  }

  // Children as ranges of one array, filled in stored order.
  int32_t next = 0;
  for (Node& node : nodes_) {
    node.firstChild = next;
    next += node.childCount;
    node.childCount = 0;
  }
  children_.resize(static_cast<size_t>(n - 1));
  for (int32_t i = 0; i < n; ++i) {
    if (i == root_) continue;
    Node& parent = nodes_[nodes_[i].parent];
    children_[static_cast<size_t>(parent.firstChild + parent.childCount++)] = i;
  }

  // Depths breadth first: a parent may be stored after its children.
  std::vector<int32_t> queue;
  queue.reserve(static_cast<size_t>(n));
  queue.push_back(root_);
  for (size_t q = 0; q < queue.size(); ++q) {
    const int32_t depth = nodes_[queue[q]].depth + 1;
    for (int32_t child : children(queue[q])) {
      nodes_[child].depth = depth;
      queue.push_back(child);
    }
  }
}

int32_t DiscTree::Find(int32_t folderId) const {
  for (size_t i = 0; i < nodes_.size(); ++i) {
    if (nodes_[i].folderId == folderId) return static_cast<int32_t>(i);
  }
  return kNone;
}

}  // namespace gorvan
