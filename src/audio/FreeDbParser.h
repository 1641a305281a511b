#pragma once
// FreeDbParser: the two parsers every FreeDB answer goes through — the answer
// to a query and the database entry of a read — and the site list. The local
// lookup dresses its findings up as server answers and uses the same parsers.
// All input is outside input: any bytes give a result or "nothing", never a
// crash, and nothing grows beyond the input's size.

#include <string>
#include <string_view>
#include <vector>

#include "audio/DiscInfo.h"

namespace gorvan {

struct QueryMatch {
  std::string category;
  std::string discId;
  std::string title;
};

struct QueryAnswer {
  int status = 0;                   // the first three characters as a number; 0 when not digits
  std::string statusLine;           // the first line, as the server wrote it
  std::vector<QueryMatch> matches;  // 200: one; 210/211: the match lines; else none
};

struct FreeDbSite {
  std::vector<std::string> fields;  // site, protocol, port, address, latitude, longitude, words
  // What the site chooser shows: site, latitude and longitude separated by
  // tabs, then each description word preceded by a blank.
  std::string ChooserText() const;
  const std::string& Site() const;
};

// How "DTITLE=" is split when it holds no " / ": texts the user names in the
// settings "FreeDbArtistBeforeIf" and "FreeDbArtistAfterIf".
struct TitleRules {
  std::string artistBeforeIf;  // "Artist - Album" with " - ": the artist stands before it
  std::string artistAfterIf;   // "Album by Artist" with " by ": the artist stands after it
};

class FreeDbParser {
 public:
  static constexpr size_t kMaxMatches = 100;

  // The status of an answer: its first three characters as a number, or 0.
  static int StatusOf(std::string_view answer);

  // Parses a query answer: 200 gives the category and disc id after "200 "
  // (and the rest of the line as the title); 210 and 211 give the match lines
  // after the status line up to "." (category, disc id, title each), at most
  // kMaxMatches; any other status gives no match.
  static QueryAnswer ParseQueryAnswer(std::string_view answer);

  // Parses a read answer, which must have status 210, into *info: revision,
  // year, genre, artist and album, track titles and notes (see the source for
  // each line's rule). Track titles go to info->tracks[n] for "TTITLE<n>=" with
  // n inside info->tracks; other track lines are ignored.
  // Returns false, leaving *info untouched, when the status is not 210.
  static bool ParseEntry(std::string_view answer, const TitleRules& rules, DiscInfo* info);

  // Splits a joined "DTITLE=" text into artist and album: at the first " / ";
  // else at the rules' texts; else the artist is empty and the whole text is
  // the album.
  static void SplitTitle(std::string_view title, const TitleRules& rules, std::string* artist,
                         std::string* album);

  // Parses a "sites" answer (status 210, lines up to "."): each line split at
  // blanks into at most 15 fields, the 15th holding the rest of the line.
  static std::vector<FreeDbSite> ParseSites(std::string_view answer);

  // The "DISCID=" ids of an entry's lines (comma-separated lists joined),
  // lower-cased.
  static std::vector<std::string> EntryDiscIds(const std::vector<std::string_view>& lines);
  // The joined "DTITLE=" text of an entry's lines.
  static std::string EntryTitle(const std::vector<std::string_view>& lines);
};

}  // namespace gorvan
