#pragma once
// FreeDbSettings: the settings a disc lookup runs with, as a plain record the
// caller fills from the settings store (section "Switches" unless noted). The
// audio layer reads no settings itself.

#include <string>
#include <string_view>

namespace gorvan {

struct FreeDbSettings {
  // Settings keys.
  static constexpr std::string_view kSection = "Switches";
  static constexpr std::string_view kKeyEnabled = "FreeDbEnabled";
  static constexpr std::string_view kKeyUseDatabase = "FreeDbUseDatabase";
  static constexpr std::string_view kKeyUseUrl = "FreeDbUseUrl";
  static constexpr std::string_view kKeyDatabasePath = "FreedbDatabasePath";
  static constexpr std::string_view kKeyUrl = "FreeDbUrl";
  static constexpr std::string_view kKeyArtistAfterIf = "FreeDbArtistAfterIf";
  static constexpr std::string_view kKeyArtistBeforeIf = "FreeDbArtistBeforeIf";
  static constexpr std::string_view kKeyProtocolLevel = "FreeDbProtocolLevel";  // ours
  static constexpr std::string_view kKeyMusicBrainz = "MusicBrainzEnabled";     // ours
  static constexpr std::string_view kEmailSection = "Defaults";
  static constexpr std::string_view kKeyEmail = "UserEmail";

  static constexpr std::string_view kDefaultServer = "gnudb.gnudb.org";
  static constexpr int kDefaultProtocolLevel = 6;
  static constexpr std::string_view kDefaultMusicBrainzServer = "https://musicbrainz.org";

  bool enabled = false;      // look audio discs up at all
  bool useDatabase = false;  // consult the local FreeDB folder
  bool useUrl = false;       // consult the FreeDB server
  std::string databasePath;  // the local folder
  std::string url;           // the server, "host[:port][/prefix]" or a URL; "" = gnudb
  std::string artistAfterIf;
  std::string artistBeforeIf;
  std::string email;                          // "Defaults"/"UserEmail": the hello's user and host
  int protocolLevel = kDefaultProtocolLevel;  // 1..6; 6 answers in UTF-8
  bool musicBrainz = false;                   // ask MusicBrainz when FreeDB finds nothing
  // Not a stored setting: where MusicBrainz is asked (tests point it at a
  // local server).
  std::string musicBrainzServer{kDefaultMusicBrainzServer};
  // Not a stored setting: which of several FreeDB matches is read (0 the
  // first; see uFreeDb::SetMatchChoice).
  size_t match = 0;
};

}  // namespace gorvan
