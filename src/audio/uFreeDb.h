#pragma once
// uFreeDb: the audio-disc lookup control. It reads a disc's table of contents
// (TocReader, chosen by CDDBInterface), computes the FreeDB disc id, and looks
// the disc up either in a local FreeDB folder or on a FreeDB server over HTTP
// (CDDB commands "cddb query" and "cddb read" through cddb.cgi), filling one
// result record. Both lookups end in the same two parsers (FreeDbParser): the
// local one dresses its findings up as server answers.
//
// Errors are raised through the error event with a number and a text (the
// server's own text where it sent one) and kept in errNumber()/errDesc().
// "Nothing found" (status 202, an entry gone) raises nothing.
//
// Threads: one object serves one thread at a time; the lookups block, so the
// desktop program runs them on a worker thread. Cancel is the caller's stop
// token: a stop requested before the lookup starts ends it at once.

#include <functional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "audio/CdDevice.h"
#include "audio/DiscInfo.h"
#include "audio/DiscToc.h"
#include "audio/FreeDbParser.h"
#include "audio/FreeDbSettings.h"
#include "audio/HttpFetch.h"

namespace gorvan {

class uFreeDb {
 public:
  // Error numbers of the error event.
  static constexpr int kErrEmail = 8881;    // "Missing or Malformed Email address"
  static constexpr int kErrNetwork = 8882;  // the transport's text, or "UnKnown Error"
  static constexpr int kErrServer = 8883;   // the server's own status line
  static constexpr int kErrAnswer = 8884;  // an answer the lookup cannot use (HTML, another status)
  static constexpr int kErrLocalFolder = 8885;  // "The folder for local database does not exist!"
  static constexpr int kErrToc = 8886;          // a table of contents no disc can have

  using ErrorEvent = std::function<void(int number, const std::string& text)>;

  uFreeDb();

  // --- Configuration --------------------------------------------------------
  const std::string& AppName() const { return appName_; }
  void SetAppName(std::string v) { appName_ = std::move(v); }
  const std::string& AppVersion() const { return appVersion_; }
  void SetAppVersion(std::string v) { appVersion_ = std::move(v); }
  // Host, "host:port", "host/prefix" or an http(s) URL; "" means gnudb.
  const std::string& CDDBServer() const { return cddbServer_; }
  void SetCDDBServer(std::string v) { cddbServer_ = std::move(v); }
  int CDDBInterface() const { return cddbInterface_; }  // TocReader selection mode
  void SetCDDBInterface(int v) { cddbInterface_ = v; }
  const std::string& EmailAddress() const { return emailAddress_; }
  void SetEmailAddress(std::string v) { emailAddress_ = std::move(v); }
  const std::string& CDDBFilePath() const { return cddbFilePath_; }
  void SetCDDBFilePath(std::string v) { cddbFilePath_ = std::move(v); }
  bool QueryLocalDatabase() const { return queryLocalDatabase_; }
  void SetQueryLocalDatabase(bool v) { queryLocalDatabase_ = v; }
  // The query step takes the first match; kept for the dialog.
  bool UseFirstMatch() const { return useFirstMatch_; }
  void SetUseFirstMatch(bool v) { useFirstMatch_ = v; }
  // Which of several matches the query step reads: 0 (the default) the first;
  // an index past the list reads the last. The desktop program lets the user
  // choose another match and looks the disc up again with it.
  size_t MatchChoice() const { return matchChoice_; }
  void SetMatchChoice(size_t v) { matchChoice_ = v; }
  int ProtocolLevel() const { return protocolLevel_; }
  void SetProtocolLevel(int v) { protocolLevel_ = v; }
  const TitleRules& Rules() const { return rules_; }
  void SetRules(TitleRules v) { rules_ = std::move(v); }

  // Server, e-mail, local folder, protocol level, title rules and the match
  // choice from the settings; QueryLocalDatabase is left to the caller.
  void Configure(const FreeDbSettings& settings);

  void SetErrorEvent(ErrorEvent fn) { errorEvent_ = std::move(fn); }
  void SetHttpFetch(HttpFetch fn) { fetch_ = std::move(fn); }
  void SetDeviceOpener(CdDeviceOpener fn) { opener_ = std::move(fn); }

  // --- Table of contents and ids ---------------------------------------------
  // The contents string of the disc in `drive` by the CDDBInterface mode, ""
  // when no reader succeeded. The full table (track types) is LastToc().
  std::string GetMediaTOC(const std::string& drive);
  const DiscToc& LastToc() const { return lastToc_; }
  // The FreeDB disc id of a contents string (DiscId::FreeDb).
  static std::string CalMediaID(std::string_view contents);
  // The volume serial of the data disc in `drive` (OpticalDrives::MediaId).
  static std::string GetMediaID(const std::string& drive);

  // --- Lookup ------------------------------------------------------------------
  // Resets the result record, fills id, lengths and track count from the
  // table, then looks the disc up locally (QueryLocalDatabase) or remotely.
  // Returns whether an entry was found. A contents string that is empty or
  // holds one value looks nothing up and raises nothing; one that is not a
  // table a disc can have raises kErrToc.
  bool LookupMediaByToc(std::string_view contents, std::stop_token stop = {});
  bool LookupMediaByToc(const DiscToc& toc, std::stop_token stop = {});

  // The part of the result record the table alone gives: disc id, album
  // length, and one track per table entry with its length. On failure (a table
  // that fails DiscToc::Check()) false, *info reset and *error the reason.
  static bool BaseRecord(const DiscToc& toc, DiscInfo* info, std::string* error);

  // --- Result record of the last lookup -----------------------------------------
  const DiscInfo& Info() const { return info_; }
  const std::string& GetMediaID() const { return info_.discId; }
  const std::string& GetArtistName() const { return info_.artist; }
  const std::string& GetAlbumName() const { return info_.album; }
  const std::string& GetAlbumCategory() const { return info_.category; }
  const std::string& GetAlbumGenre() const { return info_.genre; }
  const std::string& GetAlbumYear() const { return info_.year; }
  const std::string& GetAlbumNotes() const { return info_.notes; }
  int32_t GetAlbumLength() const { return info_.albumSeconds; }
  int GetAlbumTracks() const { return static_cast<int>(info_.tracks.size()); }
  // Track numbers count from 1; outside the disc "" and 0.
  std::string GetTrackName(int track) const;
  int32_t GetTrackTime(int track) const;

  // The matches of the last query, in the answer's order (empty when the
  // query found nothing).
  const std::vector<QueryMatch>& Matches() const { return matches_; }

  // --- Sites ------------------------------------------------------------------------
  // Asks the server for its mirror list. On success true and Sites() set; on
  // failure false and the error event raised.
  bool GetServerSites(std::stop_token stop = {});
  const std::vector<FreeDbSite>& Sites() const { return sites_; }
  // The site name of entry `index` (1-based) of the list; "" outside it (the
  // desktop program then shows its site chooser).
  std::string GetServer(int index) const;

  int errNumber() const { return errNumber_; }
  const std::string& errDesc() const { return errDesc_; }

  // --- The request texts, exposed for tests ------------------------------------------
  // "http://<server>/~cddb/cddb.cgi?cmd=" (a server given as a URL keeps its
  // scheme; one that names cddb.cgi keeps its path).
  std::string BaseUrl() const;
  // "&hello=<user>+<host>+<client>+<version>&proto=<level>"; false with the
  // error event raised for a malformed e-mail address.
  bool HelloSuffix(std::string* suffix);
  std::string QueryCommand(const DiscToc& toc) const;  // "cddb+query+..."

 private:
  bool LookupLocal(std::stop_token stop);
  bool LookupRemote(const DiscToc& toc, std::stop_token stop);
  // Fetches base + command + hello as UTF-8 text; false with the error raised
  // (nothing raised when cancelled).
  bool Fetch(const std::string& command, std::stop_token stop, std::string* text);
  // Raises the error for an answer with an unexpected status.
  void RaiseForStatus(int status, const std::string& statusLine);
  bool ReadEntry(const std::string& readAnswer, const std::string& category);
  // REQUIRES: matches_ is not empty.
  const QueryMatch& ChosenMatch() const;
  void Raise(int number, std::string text);

  std::string appName_ = "Gorvan";
  std::string appVersion_;
  std::string cddbServer_;
  int cddbInterface_ = 0;
  std::string emailAddress_;
  std::string cddbFilePath_;
  bool queryLocalDatabase_ = false;
  bool useFirstMatch_ = true;
  size_t matchChoice_ = 0;
  int protocolLevel_ = FreeDbSettings::kDefaultProtocolLevel;
  TitleRules rules_;

  ErrorEvent errorEvent_;
  HttpFetch fetch_;
  CdDeviceOpener opener_;

  DiscToc lastToc_;
  DiscInfo info_;
  std::vector<QueryMatch> matches_;
  std::vector<FreeDbSite> sites_;
  int errNumber_ = 0;
  std::string errDesc_;
};

}  // namespace gorvan
