#include "catalog/CatalogCheck.h"

#include <algorithm>

namespace gorvan {
namespace {

std::string Id(int32_t id) { return std::to_string(id); }

bool IsInside(const TextRef& t, int64_t length) {
  if (t.count == 0) return true;
  return t.count > 0 && t.pos >= 1 && static_cast<int64_t>(t.pos) - 1 + t.count <= length;
}

int32_t OwnId(const CdRecord& r) { return r.id; }
int32_t OwnId(const DirRecord& r) { return r.id; }
int32_t OwnId(const FileRecord& r) { return r.id; }
int32_t OwnId(const CatRecord& r) { return r.kind == CatRecord::kKind ? r.id : -1; }

}  // namespace

void CatalogCheck::Problem(std::string text) {
  if (problems_.size() < kMaxProblems) {
    problems_.push_back(std::move(text));
  } else if (problems_.size() == kMaxProblems) {
    problems_.push_back("... more problems were not listed");
  }
}

bool CatalogCheck::Visit(const std::string& where) {
  // A sound file holds no more records than its length allows for the
  // smallest record; walking more means some chains loop into each other.
  if (budgetSpent_ || stopped_) return false;
  if (job_->StopRequested()) {
    stopped_ = true;
    return false;
  }
  ++progress_.value;
  if (job_->Due()) job_->Report(progress_);
  if (++visited_ > file_->Length() / static_cast<int64_t>(CatRecord::kSize) + 1) {
    budgetSpent_ = true;
    Problem(where + ": the chains hold more records than the file can; they loop");
    return false;
  }
  return true;
}

template <typename Record>
bool CatalogCheck::Load(int32_t id, Record* out, const char* kind, const std::string& where) {
  if (!file_->IsBlockInside(id, Record::kSize)) {
    Problem(where + ": the link to " + kind + " " + Id(id) + " points outside the file");
    return false;
  }
  uint8_t buf[Record::kSize];
  if (!file_->data().Read(id, buf, Record::kSize).ok()) {
    Problem(where + ": " + kind + " " + Id(id) + " cannot be read");
    return false;
  }
  *out = Record::DecodeFrom(buf);
  if (OwnId(*out) != id) {
    Problem(where + ": the link " + Id(id) + " does not point at a " + kind + " record");
    return false;
  }
  return true;
}

int64_t CatalogCheck::CheckTexts(std::initializer_list<const TextRef*> texts,
                                 const std::string& where) {
  int64_t bytes = 0;
  for (const TextRef* t : texts) {
    if (!IsInside(*t, file_->Length())) {
      Problem(where + ": a text lies outside the file (position " + Id(t->pos) + ", " +
              Id(t->count) + " bytes)");
    } else {
      bytes += t->count;
    }
  }
  return bytes;
}

std::vector<std::string> CatalogCheck::Run(JobControl& job) {
  CatalogFile::ThreadHandover handover(file_);
  job_ = &job;
  progress_ = JobProgress{};
  progress_.maximum = file_->Length() / static_cast<int64_t>(CatRecord::kSize) + 1;
  problems_.clear();
  categories_.clear();
  liveBytes_ = 0;
  visited_ = 0;
  budgetSpent_ = false;
  stopped_ = job.StopRequested();
  CheckHeader();
  CheckCategories();
  CheckDiscs();
  job.Final(progress_);
  if (stopped_) return problems_;
  if (liveBytes_ > file_->Length()) {
    Problem("the records account for " + std::to_string(liveBytes_) +
            " bytes, more than the file's " + std::to_string(file_->Length()));
  }
  return problems_;
}

void CatalogCheck::CheckHeader() {
  const HeaderRecord& h = file_->header();
  const int64_t bytes = static_cast<int64_t>(HeaderRecord::kSize) +
                        CheckTexts({&h.font, &h.name, &h.notes, &h.extra, &h.iconKey, &h.password},
                                   "header");
  if (bytes != h.bytesUsed) {
    Problem("header: bytes used is " + Id(h.bytesUsed) + " but its block and texts take " +
            std::to_string(bytes));
  }
  liveBytes_ += h.bytesUsed;
}

void CatalogCheck::CheckCategories() {
  const HeaderRecord& h = file_->header();
  int32_t prev = 0;
  int32_t count = 0;
  std::vector<CatRecord> cats;
  for (int32_t id = h.firstCat; id != 0;) {
    const std::string where = "category " + Id(id);
    if (!Visit(where)) break;
    CatRecord c;
    if (!Load(id, &c, "category", prev ? "category " + Id(prev) : std::string("header"))) break;
    if (c.prev != prev) {
      Problem(where + ": its previous link is " + Id(c.prev) + " but it follows " + Id(prev));
    }
    const int64_t bytes = static_cast<int64_t>(CatRecord::kSize) +
                          CheckTexts({&c.name, &c.notes, &c.extra, &c.iconKey}, where);
    if (bytes != c.bytesUsed) {
      Problem(where + ": bytes used is " + Id(c.bytesUsed) + " but its block and texts take " +
              std::to_string(bytes));
    }
    liveBytes_ += c.bytesUsed;
    cats.push_back(c);
    ++count;
    prev = id;
    id = c.next;
  }
  if (prev != h.lastCat) {
    Problem("header: the last category is " + Id(h.lastCat) + " but the chain ends at " + Id(prev));
  }
  if (count != h.catCount) {
    Problem("header: the category count is " + Id(h.catCount) + " but the chain holds " +
            Id(count));
  }
  for (const CatRecord& c : cats) categories_.push_back(c.id);
  std::sort(categories_.begin(), categories_.end());
  auto parentOf = [&](int32_t id) -> int32_t {
    for (const CatRecord& c : cats) {
      if (c.id == id) return c.parent;
    }
    return 0;
  };
  for (const CatRecord& c : cats) {
    if (c.parent == 0) continue;
    if (!std::binary_search(categories_.begin(), categories_.end(), c.parent)) {
      Problem("category " + Id(c.id) + ": its parent " + Id(c.parent) + " is not a category");
      continue;
    }
    int32_t up = c.parent;
    for (size_t steps = 0; up != 0; ++steps) {
      if (up == c.id || steps > cats.size()) {
        Problem("category " + Id(c.id) + ": its parents loop back to it");
        break;
      }
      up = parentOf(up);
    }
  }
}

void CatalogCheck::CheckDiscs() {
  const HeaderRecord& h = file_->header();
  int32_t prev = 0;
  int32_t count = 0;
  for (int32_t id = h.firstCd; id != 0;) {
    const std::string where = "disc " + Id(id);
    if (!Visit(where)) break;
    CdRecord cd;
    if (!Load(id, &cd, "disc", prev ? "disc " + Id(prev) : std::string("header"))) break;
    if (cd.prev != prev) {
      Problem(where + ": its previous link is " + Id(cd.prev) + " but it follows " + Id(prev));
    }
    if (cd.category != 0 &&
        !std::binary_search(categories_.begin(), categories_.end(), cd.category)) {
      Problem(where + ": its category " + Id(cd.category) + " is not a category");
    }
    int64_t bytes = static_cast<int64_t>(CdRecord::kSize) +
                    CheckTexts({&cd.name, &cd.notes, &cd.label, &cd.basePath, &cd.extra,
                                &cd.iconKey},
                               where);
    bytes += CheckFolders(cd, where);
    if (bytes != cd.bytesUsed) {
      Problem(where + ": bytes used is " + Id(cd.bytesUsed) + " but its records and texts take " +
              std::to_string(bytes));
    }
    liveBytes_ += cd.bytesUsed;
    ++count;
    prev = id;
    id = cd.next;
  }
  if (prev != h.lastCd) {
    Problem("header: the last disc is " + Id(h.lastCd) + " but the chain ends at " + Id(prev));
  }
  if (count != h.cdCount) {
    Problem("header: the disc count is " + Id(h.cdCount) + " but the chain holds " + Id(count));
  }
}

int64_t CatalogCheck::CheckFolders(const CdRecord& cd, const std::string& owner) {
  int64_t bytes = 0;
  int32_t prev = 0;
  for (int32_t id = cd.firstDir; id != 0;) {
    const std::string where = "folder " + Id(id);
    if (!Visit(where)) break;
    DirRecord d;
    if (!Load(id, &d, "folder", prev ? "folder " + Id(prev) : owner)) break;
    if (d.cdId != cd.id) Problem(where + ": its disc is " + Id(d.cdId) + ", not " + Id(cd.id));
    if (d.prev != prev) {
      Problem(where + ": its previous link is " + Id(d.prev) + " but it follows " + Id(prev));
    }
    bytes += static_cast<int64_t>(DirRecord::kSize) +
             CheckTexts({&d.path, &d.name, &d.notes, &d.extra}, where);
    bytes += CheckFiles(d.firstFile, d.lastFile, d.id, cd.id, false, where);
    prev = id;
    id = d.next;
  }
  if (prev != cd.lastDir) {
    Problem(owner + ": the last folder is " + Id(cd.lastDir) + " but the chain ends at " +
            Id(prev));
  }
  return bytes;
}

int64_t CatalogCheck::CheckFiles(int32_t first, int32_t last, int32_t dirId, int32_t cdId,
                                 bool members, const std::string& owner) {
  int64_t bytes = 0;
  int32_t prev = 0;
  const char* kind = members ? "archive member" : "file";
  for (int32_t id = first; id != 0;) {
    const std::string where = std::string(kind) + " " + Id(id);
    if (!Visit(where)) break;
    FileRecord f;
    if (!Load(id, &f, kind, prev ? std::string(kind) + " " + Id(prev) : owner)) break;
    if (!members && f.dirId != dirId) {
      Problem(where + ": its folder is " + Id(f.dirId) + ", not " + Id(dirId));
    }
    if (f.cdId != cdId) Problem(where + ": its disc is " + Id(f.cdId) + ", not " + Id(cdId));
    if (f.prev != prev) {
      Problem(where + ": its previous link is " + Id(f.prev) + " but it follows " + Id(prev));
    }
    bytes += static_cast<int64_t>(FileRecord::kSize) +
             CheckTexts({&f.path, &f.name, &f.notes, &f.extra}, where);
    if (members && (f.firstZip != 0 || f.lastZip != 0)) {
      Problem(where + ": an archive member holds members of its own");
    } else if (f.firstZip != 0 || f.lastZip != 0) {
      bytes += CheckFiles(f.firstZip, f.lastZip, dirId, cdId, true, where);
    }
    prev = id;
    id = f.next;
  }
  if (prev != last) {
    Problem(owner + ": the last " + kind + " is " + Id(last) + " but the chain ends at " +
            Id(prev));
  }
  return bytes;
}

}  // namespace gorvan
