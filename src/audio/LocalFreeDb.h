#pragma once
// LocalFreeDb: a FreeDB database copied to a local folder — one folder per
// category ("blues" ... "soundtrack"). Two layouts are found in the wild and
// both are read:
//   - one file per entry, named by its 8-digit id ("rock/a80efa0d"); an entry
//     listing several ids in its "DISCID=" line is found under each file;
//   - files holding many entries, named by the range of first id bytes they
//     cover ("rock/a0tobf"); an entry is found through its "DISCID=" lines.
// An entry in a file ends at its "PLAYORDER=" line. Lines may end in CR LF or
// LF; text that is not UTF-8 is read as Latin-1.

#include <array>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "catalog/Status.h"

namespace gorvan {

class LocalFreeDb {
 public:
  // The category folders, in the order they are searched.
  static constexpr std::array<std::string_view, 11> kCategories = {
      "blues", "country", "classical", "data", "folk",      "jazz",
      "misc",  "newage",  "reggae",    "rock", "soundtrack"};

  // An entry longer than this is skipped, a line longer than kMaxLineBytes cut.
  static constexpr size_t kMaxEntryBytes = 1 << 20;
  static constexpr size_t kMaxLineBytes = 64 * 1024;

  struct Match {
    std::string category;
    std::string entry;  // the entry's lines (UTF-8), each ending in LF
    std::string title;  // its joined "DTITLE=" text
  };

  // Looks for `discId` (8 hex digits) in every category folder of `root`, in
  // the order above, taking at most one entry per category.
  // On success: OK and *matches holds what was found (possibly nothing).
  // On failure: NotFound when `root` is not a folder; Cancelled when `stop` was
  // requested (checked before each category and between file chunks).
  [[nodiscard]] static Status Find(const std::string& root, std::string_view discId,
                                   std::stop_token stop, std::vector<Match>* matches);

  // The server-style query answer for the matches: "202 No match for disc ID
  // <id>." for none, "200 <category> <id> <title>" for one, and "210 Found
  // exact matches, list follows (until terminating `.')" with one line per
  // match and "." for several.
  static std::string QueryAnswerFor(const std::vector<Match>& matches, std::string_view discId);

  // The server-style read answer: "210 <category> <id> CD database entry
  // follows (until terminating `.')", the entry's lines and ".", CR LF each.
  static std::string ReadAnswerFor(const Match& match, std::string_view discId);
};

}  // namespace gorvan
