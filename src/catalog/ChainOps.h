#pragma once
// The chain operations shared by every record kind: each chain is a doubly
// linked list of blocks whose ends are held by an owner (the header for discs
// and categories, a disc for its folders, a folder for its files, an archive
// file for its members).

#include <cstdint>
#include <string>

#include "catalog/CatalogFile.h"

namespace gorvan {

inline Status LoopError(const char* kind) {
  return Status::Corruption(std::string("the chain of ") + kind + " records loops");
}

// Links rec, already stored at rec.id, at the end of the chain *first..*last:
// the old last member's next link is set to it and rec is rewritten.
template <typename Record>
bool LinkAtEnd(CatalogFile& f, Record& rec, int32_t* first, int32_t* last) {
  rec.prev = *last;
  rec.next = 0;
  if (*last >= 1) {
    Record tail;
    if (!f.Read(*last, &tail)) return false;
    tail.next = rec.id;
    if (!f.Write(tail)) return false;
  }
  if (*first == 0) *first = rec.id;
  *last = rec.id;
  return f.Write(rec);
}

// Takes record id out of the chain *first..*last; its neighbours are linked to
// each other. The block itself stays in the file as garbage.
template <typename Record>
bool UnlinkFromChain(CatalogFile& f, int32_t id, int32_t* first, int32_t* last, Record* removed) {
  Record rec;
  if (!f.Read(id, &rec)) return false;
  if (rec.prev >= 1) {
    Record p;
    if (!f.Read(rec.prev, &p)) return false;
    p.next = rec.next;
    if (!f.Write(p)) return false;
  } else {
    *first = rec.next;
  }
  if (rec.next >= 1) {
    Record n;
    if (!f.Read(rec.next, &n)) return false;
    n.prev = rec.prev;
    if (!f.Write(n)) return false;
  } else {
    *last = rec.prev;
  }
  *removed = rec;
  return true;
}

// Walks a chain from its first member and sets each member's previous link to
// the member before it, rewriting only the blocks that change.
template <typename Record>
bool RecalculatePrevLinks(CatalogFile& f, int32_t first, const char* kind) {
  int32_t prev = 0;
  int64_t steps = 0;
  const int64_t limit = f.MaxChainLength(Record::kSize);
  for (int32_t id = first; id != 0;) {
    if (++steps > limit) return f.Fail(LoopError(kind));
    Record r;
    if (!f.Read(id, &r)) return false;
    if (r.prev != prev) {
      r.prev = prev;
      if (!f.Write(r)) return false;
    }
    prev = id;
    id = r.next;
  }
  return true;
}

}  // namespace gorvan
