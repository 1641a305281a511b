#include "catalog/DiscTree.h"

#include <algorithm>
#include <functional>

#include "catalog/TextCodec.h"
#include "catalog/classCd.h"

namespace gorvan {
namespace {

// A parent not yet found while reading: its path may be stored further on.
constexpr int32_t kLater = -2;

std::string_view TrimBackslashes(std::string_view s) {
  while (!s.empty() && s.front() == '\\') s.remove_prefix(1);
  while (!s.empty() && s.back() == '\\') s.remove_suffix(1);
  return s;
}

}  // namespace

// Full paths are never stored whole: a 50,000-folder disc would need megabytes
// for them, and fresh memory costs a page fault per 4 KiB. A folder's full path
// is its parent's full path, a `\` and its name, and the parent was found by
// comparing its parent path with exactly that; so the names and parent links
// already hold every full path. Only folders whose parent is not found when
// they are read keep their parent path as text ("loose" paths, the root's and
// rarely others). Comparisons run on the texts as UTF-8: the Windows-1252
// conversion maps each byte to its own character and `\` to itself, so equal
// UTF-8 means equal stored bytes.
class DiscTree::Builder {
 public:
  Builder(DiscTree* tree, size_t expected)
      : t_(*tree), slots_(std::max<size_t>(16, expected + expected / 2)) {
    keySize_.reserve(expected);
  }

  struct Slot {
    uint32_t tag;  // the key's hash; also picks the slot, so growing needs no key
    int32_t first = kNone;
    int32_t latest = kNone;
  };

  // The entry for full path key, or null.
  const Slot* Find(std::string_view key) const {
    const Slot& s = slots_[Locate(key, Tag(key))];
    return s.first == kNone ? nullptr : &s;
  }

  // Indexes node under full path key. REQUIRES: the node and its key size are
  // stored, and its loose path when it has one.
  void Add(std::string_view key, int32_t node) {
    if ((used_ + 1) * 3 > slots_.size() * 2) Grow();
    const uint32_t tag = Tag(key);
    Slot& s = slots_[Locate(key, tag)];
    if (s.first == kNone) {
      s = Slot{tag, node, node};
      ++used_;
    } else {
      s.latest = node;
    }
  }

  void AddKeySize(size_t size) { keySize_.push_back(static_cast<int32_t>(size)); }
  void AddLoosePath(int32_t node, std::string_view path) {
    loose_.push_back(
        Loose{node, static_cast<uint32_t>(looseText_.size()), static_cast<uint32_t>(path.size())});
    looseText_.append(path);
  }
  std::string_view LoosePath(int32_t node) const {
    const auto it = std::lower_bound(loose_.begin(), loose_.end(), node,
                                     [](const Loose& l, int32_t n) { return l.node < n; });
    return std::string_view(looseText_).substr(it->at, it->size);
  }
  const std::vector<int32_t>& keySizes() const { return keySize_; }
  std::vector<int32_t>& scratch() { return keySize_; }

 private:
  struct Loose {
    int32_t node;
    uint32_t at, size;
  };

  static uint32_t Tag(std::string_view key) {
    const uint64_t h = std::hash<std::string_view>{}(key);
    return static_cast<uint32_t>(h ^ (h >> 32));
  }

  // The slot holding key, or the empty one where it would go.
  size_t Locate(std::string_view key, uint32_t tag) const {
    size_t i = static_cast<size_t>((uint64_t{tag} * slots_.size()) >> 32);
    for (;; i = i + 1 == slots_.size() ? 0 : i + 1) {
      const Slot& s = slots_[i];
      if (s.first == kNone || (s.tag == tag && KeyEquals(key, s.first))) return i;
    }
  }

  // Only when the chain holds more folders than the disc's count said.
  void Grow() {
    std::vector<Slot> old(slots_.size() * 2);
    old.swap(slots_);
    for (const Slot& s : old) {
      if (s.first == kNone) continue;
      size_t i = static_cast<size_t>((uint64_t{s.tag} * slots_.size()) >> 32);
      while (slots_[i].first != kNone) i = i + 1 == slots_.size() ? 0 : i + 1;
      slots_[i] = s;
    }
  }

  // Whether key is the full path of node: its name at the end, then a `\`
  // unless one side is empty, then its parent's full path or its loose path.
  // Parents have shorter full paths (or equal, without a name, stored before),
  // so the walk ends.
  bool KeyEquals(std::string_view key, int32_t node) const {
    for (;;) {
      if (key.size() != static_cast<size_t>(keySize_[static_cast<size_t>(node)])) return false;
      const std::string_view name = TrimBackslashes(t_.name(node));
      if (!key.ends_with(name)) return false;
      key.remove_suffix(name.size());
      if (!name.empty() && !key.empty()) {
        if (key.back() != '\\') return false;
        key.remove_suffix(1);
      }
      const int32_t parent = t_.nodes_[static_cast<size_t>(node)].parent;
      if (parent < 0) return key == LoosePath(node);
      node = parent;
    }
  }

  const DiscTree& t_;
  std::vector<Slot> slots_;
  size_t used_ = 0;
  std::vector<int32_t> keySize_;  // per node
  std::vector<Loose> loose_;      // by node
  std::string looseText_;
};

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
  names_.reserve(expected * 8);
  Builder b(this, expected);
  const bool utf8 = file->encoding() == TextEncoding::kUtf8;
  std::string key, previousKey, decoded;
  size_t previousParentSize = 0;
  // A text is never written over another, so a sound chain holds at most the
  // file's length of them. More means it loops or shares texts; the bound on
  // steps alone would let that hold up to the file's length squared.
  int64_t textBudget = file->Length();

  for (classDir& dir = cd.GetDirFirst(); !dir.isEof(); dir.MoveNext()) {
    const DirRecord& r = dir.record();
    // Each peeked view dies at the next read: copy it before the next peek.
    std::string_view text;
    if (!file->PeekRawText(r.path, &text)) break;
    if (utf8) {
      key.assign(TrimBackslashes(text));
    } else {
      TextCodec::Windows1252ToUtf8(text, &decoded);
      key.assign(TrimBackslashes(decoded));
    }
    const size_t parentSize = key.size();
    if (!file->PeekRawText(r.name, &text)) break;
    textBudget -= int64_t{r.path.count} + int64_t{r.name.count};
    if (textBudget < 0) {
      file->Fail(Status::Corruption(
          "the folder chain holds more text than the file; it loops or shares its texts"));
      break;
    }
    if (!utf8) {
      TextCodec::Windows1252ToUtf8(text, &decoded);
      text = decoded;
    }
    if (names_.size() + text.size() > UINT32_MAX) {
      file->Fail(Status::InvalidArgument("the folder names of this disc are too long to hold"));
      break;
    }
    const std::string_view own = TrimBackslashes(text);
    if (!own.empty()) {
      if (parentSize > 0) key.push_back('\\');
      key.append(own);
    }

    const auto node = static_cast<int32_t>(nodes_.size());
    const std::string_view parentKey = std::string_view(key).substr(0, parentSize);
    // Scans store folders depth first: the parent is most often the folder
    // just read, or the one it had. Both answers are what the index would give.
    int32_t parent = kLater;
    if (node > 0 && parentKey == previousKey) {
      parent = node - 1;
    } else if (node > 0 &&
               parentKey == std::string_view(previousKey).substr(0, previousParentSize)) {
      parent = nodes_[static_cast<size_t>(node - 1)].parent;
    } else if (const Builder::Slot* slot = b.Find(parentKey)) {
      parent = slot->latest;
    }
    nodes_.push_back(Node{r.id, parent, 0, 0, static_cast<uint32_t>(names_.size()),
                          static_cast<uint32_t>(text.size())});
    names_.append(text);
    b.AddKeySize(key.size());
    if (parent == kLater) b.AddLoosePath(node, parentKey);
    b.Add(key, node);
    key.swap(previousKey);
    previousParentSize = parentSize;
  }

  // Folders stored before every folder of their parent path take the first
  // one after them; a folder is never its own parent.
  for (int32_t i = 0; i < size(); ++i) {
    if (nodes_[i].parent != kLater) continue;
    const Builder::Slot* s = b.Find(b.LoosePath(i));
    nodes_[i].parent = s && s->first != i ? s->first : kNone;
  }
  Resolve(&b.scratch());
  return file->ok() ? Status::OK() : file->error();
}

void DiscTree::Resolve(std::vector<int32_t>* scratch) {
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
  // Children as ranges of one array in stored order: count them in childEnd,
  // turn the counts into starts, then fill, which moves each start to its end.
  for (int32_t i = 0; i < n; ++i) {
    Node& node = nodes_[i];
    if (i == root_) continue;
    if (node.parent == kNone) {
      node.parent = root_;
      ++orphans_;
    }
    ++nodes_[node.parent].childEnd;
  }
  int32_t start = 0;
  for (Node& node : nodes_) {
    const int32_t count = node.childEnd;
    node.childEnd = start;
    start += count;
  }
  children_.resize(static_cast<size_t>(n - 1));
  for (int32_t i = 0; i < n; ++i) {
    if (i != root_) children_[static_cast<size_t>(nodes_[nodes_[i].parent].childEnd++)] = i;
  }

  // Depths breadth first, as a parent may be stored after its children.
  std::vector<int32_t>& queue = *scratch;
  queue.assign(1, root_);
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
