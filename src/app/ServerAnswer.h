#pragma once
// ServerAnswer: the support server's answer to an error submission and to a
// version check — one "<Gorvan>" ... "</Gorvan>" element holding six child
// elements of plain text:
//
//   <Gorvan><CurrentVersion>1.2.0</CurrentVersion><ReleaseDate>...</ReleaseDate>
//   <ExtraInfo>...</ExtraInfo><Ticket>...</Ticket><UrlStd>...</UrlStd>
//   <UrlPro>...</UrlPro></Gorvan>
//
// Thread contract: none needed (plain values).

#include <array>
#include <string>
#include <string_view>

namespace gorvan {

struct ServerAnswer {
  std::string currentVersion;
  std::string releaseDate;
  std::string extraInfo;
  std::string ticket;
  std::string urlStd;
  std::string urlPro;

  // Reads text. On success fills *answer and returns true. The answer is
  // refused as a whole (false) when "<Gorvan>" or "</Gorvan>" is missing, or
  // any child element is missing inside it or holds markup: the closing tag
  // of each child must be the very next "<" after its opening tag.
  static bool Parse(std::string_view text, ServerAnswer* answer);
};

// A version of exactly three numeric parts joined by ".".
using VersionParts = std::array<int, 3>;

// "major.minor.revision" with each part one to nine decimal digits; false
// for anything else ("2.1", "2.x.0", "1.2.3.4", " 1.2.3").
bool ParseVersion(std::string_view text, VersionParts* parts);
// The version this program is: GORVAN_VERSION_MAJOR, _MINOR, _REVISION.
VersionParts RunningVersion();

}  // namespace gorvan
