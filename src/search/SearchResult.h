#pragma once
// SearchResult: one row of the search results — the object that was found,
// the ids of its owners and the eight columns the results list shows.

#include <cstdint>
#include <string>

namespace gorvan {

struct SearchResult {
  enum class Kind { kDisc, kFolder, kFile, kArchiveEntry };

  // The column captions, in column order.
  static constexpr const char* kColumns[8] = {"FileName", "CD Name",    "Path",  "Date",
                                              "Size",     "Attributes", "Notes", "Internal Date"};

  Kind kind = Kind::kFile;
  // Owner ids; 0 where the object has no such owner.
  int32_t categoryId = 0;
  int32_t discId = 0;
  int32_t folderId = 0;
  int32_t fileId = 0;
  int32_t entryId = 0;  // an archive entry

  std::string fileName;      // "FileName": the object's name, the row's text
  std::string cdName;        // "CD Name"
  std::string path;          // "Path"
  std::string date;          // "Date": the general date format
  std::string size;          // "Size"
  std::string attributes;    // "Attributes"
  std::string notes;         // "Notes"
  std::string internalDate;  // "Internal Date": see InternalDateKey

  // The row key: "T:" category, "C:" disc, "D:" folder, "F:" file, "Z:" archive
  // entry, each part only for a non-zero id, joined by a backslash, e.g.
  // "T:3\C:120\D:940\F:1210".
  std::string Key() const;
};

// The sort key of the "Internal Date" column: year, month, day, hour and
// seconds ("yyyymmddhhss"). The minutes are not part of it, so two dates in
// the same second of different minutes of one hour share a key; the results
// list has always sorted by this key and users' saved lists hold it.
// "" for a value that is no date.
std::string InternalDateKey(double oleDate);

}  // namespace gorvan
