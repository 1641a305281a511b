#pragma once
// ExtensionFilter: which files a scan catalogues, by their extension. The
// include and exclude lists are the dialog's texts followed by ";", e.g.
// "*.jpg;*.png;". A list answers 1 when it holds the catch-all "*.*;", else 0
// when it holds "*." + the name's extension + ";", else 2, ignoring case; a
// file is kept when the include list answers 0, or when it answers 1 and the
// exclude list does not answer 0.

#include <string>
#include <string_view>

namespace gorvan {

class ExtensionFilter {
 public:
  // Takes the two lists (lower-cased once here, not per file).
  void SetLists(std::string_view includeList, std::string_view excludeList);
  // Whether the file named name is catalogued.
  bool Keep(std::string_view name);

  // The answer of one list for one name (see above).
  static int MatchExtList(std::string_view name, std::string_view list);
  static bool KeepFile(int includeResult, int excludeResult) {
    return includeResult == 0 || (includeResult == 1 && excludeResult != 0);
  }
  // The text after the last "." of the name; "" when there is none or the
  // "." is the last character.
  static std::string_view Extension(std::string_view name);

 private:
  static int Match(std::string_view name, std::string_view lowerList, bool catchAll,
                   std::string* needle);

  std::string include_, exclude_;
  bool includeAll_ = false, excludeAll_ = false;
  std::string needle_;
};

}  // namespace gorvan
