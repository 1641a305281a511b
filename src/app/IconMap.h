#pragma once
// IconMap: the file-type icon table of "Gorvan.map" in the application folder,
// one "extension,icon key" line per entry (extensions without the dot), in
// file order. The desktop program builds its file-type icons from it at start
// and its icon maintenance writes it back.
//
// Thread contract: an object is used by one thread at a time.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace gorvan {

inline constexpr const char* kIconMapName = "Gorvan.map";

class IconMap {
 public:
  struct Entry {
    std::string extension;
    std::string iconKey;
    bool operator==(const Entry&) const = default;
  };

  // The lines a missing map file is created with, in order.
  static const std::vector<Entry>& DefaultEntries();
  // Only this much of a map file is read; the rest is ignored.
  static constexpr size_t kMaxFileBytes = size_t{4} << 20;

  // Reads the table from path. A missing file is first created with the four
  // default lines. Each line is split at ","; a line with exactly two fields
  // adds an entry, any other line is skipped (a trailing CR is dropped). On
  // failure (the file can be neither created nor read) the table holds the
  // default entries and false is returned.
  bool Load(const std::string& path);
  // Writes the table to path, one line per entry, replacing the file only
  // when the new one is complete. On failure logs it ("IconMap.Save") and
  // returns false.
  bool Save(const std::string& path) const;

  const std::vector<Entry>& entries() const { return entries_; }
  // The icon key of the first entry for extension (ASCII case ignored, a
  // leading dot allowed); "" when there is none.
  std::string KeyOf(std::string_view extension) const;
  // Gives extension the key: the first entry for it changes, else one is added.
  void Set(std::string_view extension, std::string_view iconKey);
  // Drops every entry for extension.
  void Remove(std::string_view extension);

 private:
  std::vector<Entry> entries_;
};

}  // namespace gorvan
