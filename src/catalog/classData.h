#pragma once
// classData: the open catalog. It owns the file for as long as the catalog is
// open, holds the header record, and hands out the disc and category cursors.
//
// Failure is reported the way the rest of the program expects it: Boolean
// results plus an error state (GetError) and, for the details, GetErrorText.
//
// Thread contract. A classData, its CatalogFile and every cursor made over it
// belong to one thread at a time: the thread that opened it, or the worker
// thread of a job it was handed to (classData::ThreadHandover) while the
// opening thread leaves it alone for the job's length. There is one writer: the
// open catalog. A job that only reads (search, export) or a view that loads
// rows while a job writes reads through a reader of its own (OpenReader), with
// its own descriptor, read window and cursors; it sees the catalog as of the
// writer's last flush, and ReloadHeader brings it up to date once the writer
// has committed more.

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "catalog/CatalogFile.h"
#include "catalog/FileIO.h"
#include "catalog/JobControl.h"
#include "catalog/Records.h"
#include "catalog/TextCodec.h"
#include "catalog/classCat.h"
#include "catalog/classCd.h"

namespace gorvan {

inline constexpr const char* kWrongVersionMessage =
    "Error!!\nWrong Version of the Data File\nCan't Use newer version data";
inline constexpr const char* kDataFileErrorMessage =
    "Data File Error (1001) !!! Please Start Gorvan Again. If the error persist, then use your "
    "data backup";
inline constexpr const char* kDefaultCatalogName = "Gorvan";

class classData {
 public:
  enum ErrorState : int {
    kNoError = 0,
    kWrongVersion = 1,       // signature or version is not ours
    kPasswordNotGiven = 2,   // the catalog's password was not passed
    kNoFileName = -3,
    kDataFileError = 1001,   // the file is damaged
    kCannotOpen = 1002,      // the system would not open the file (rights, in use, ...)
  };

  // Given the catalog's current password, asks the user and returns true when
  // the user passed (AskPassword).
  using PasswordPrompt = std::function<bool(const std::string& current)>;

  classData();
  ~classData();
  classData(const classData&) = delete;
  classData& operator=(const classData&) = delete;

  // Opens the catalog, or creates it when no file of that name exists. With
  // askPassword set, a catalog with a password is opened only when the prompt
  // passes. With setDefaults set, a new catalog gets its default texts (name
  // "Gorvan"). Only the header is written: the last-opened date, and for a new
  // catalog the whole header. A refused catalog is not written at all.
  bool OpenFiles(const std::string& name, bool askPassword, bool setDefaults);
  // Opens over an already opened file (tests use a failing one).
  bool OpenWith(std::unique_ptr<FileIO> io, const std::string& name, bool exists,
                bool askPassword, bool setDefaults);
  void CloseFiles();
  bool IsOpen() const { return file_ != nullptr; }

  // Hands the open catalog to the calling thread for the object's lifetime
  // and back to its previous owner afterwards — also when the job reopened
  // the catalog in between (a compaction). Every job takes the catalog it was
  // given this way.
  class ThreadHandover {
   public:
    explicit ThreadHandover(classData& data)
        : data_(data), previous_(data.file_ ? data.file_->owner() : std::thread::id()) {
      if (data_.file_) data_.file_->SetOwner(std::this_thread::get_id());
    }
    ~ThreadHandover() {
      if (data_.file_) data_.file_->SetOwner(previous_);
    }
    ThreadHandover(const ThreadHandover&) = delete;
    ThreadHandover& operator=(const ThreadHandover&) = delete;

   private:
    classData& data_;
    std::thread::id previous_;
  };

  // A read-only view of this open catalog for another thread (see the thread
  // contract above); what this writer has buffered is flushed first. Every
  // write through a reader fails. On failure returns null with the reason.
  std::unique_ptr<classData> OpenReader(Status* status);
  bool IsReader() const { return readOnly_; }
  // A reader takes the file's length and header again and clears its error.
  bool ReloadHeader();
  int GetError() const { return error_; }
  // The message for the last failure: the product's own words where it has them.
  std::string GetErrorText() const;
  const std::string& GetDataFileName() const { return fileName_; }

  void SetPasswordPrompt(PasswordPrompt prompt) { passwordPrompt_ = std::move(prompt); }
  // The encoding of catalogs created from now on (UTF-8 unless changed).
  void SetNewCatalogEncoding(TextEncoding enc) { newEncoding_ = enc; }
  TextEncoding GetEncoding() const;

  int16_t VersionMajor() const { return file_->header().versionMajor; }
  int16_t VersionMinor() const { return file_->header().versionMinor; }
  int16_t VersionRevision() const { return file_->header().versionRevision; }

  const HeaderRecord& GetTableHeader() const { return file_->header(); }
  bool recordWrite();

  // Cursors of one's own. Every walk and every job uses cursors it owns, so
  // that no two walks ever move the same one; a cursor lives no longer than
  // the catalog it was made for.
  classCd CdCursor() { return classCd(file_.get()); }
  classCat CatCursor() { return classCat(file_.get()); }

  // Discs.
  int32_t GetCdCount() const { return file_->header().cdCount; }
  // Loads a new disc block into cd, unlinked until GetCdCommit.
  bool GetCdAppend(classCd& cd);
  // Links the disc loaded in cd at the end of the chain, after its records
  // are on disk.
  bool GetCdCommit(classCd& cd);
  // Takes a disc out of the chain; its records stay as garbage.
  bool GetCdDelete(int32_t id);

  // Categories.
  int32_t GetCatCount() const { return file_->header().catCount; }
  // Loads a new category block (created now) into cat, unlinked until GetCatCommit.
  bool GetCatAppend(classCat& cat);
  bool GetCatCommit(classCat& cat);
  bool GetCatDelete(int32_t id);

  // Lookups of ids that come from outside (a user, a command line, a view that
  // may be out of date). Each loads the record into the given cursor when the
  // id is a live record of its kind: a category or disc in its chain, a folder
  // in its disc's chain, a file in its folder's chain or an archive member in
  // its archive's. NotFound for any other id, with the catalog's error state
  // left clear; the catalog's error only when a chain turns out damaged.
  Status FindCat(int32_t id, classCat* cat);
  Status FindCd(int32_t id, classCd* cd);
  // Leaves cd on the folder's disc and cd->dirs() on the folder.
  Status FindDir(int32_t id, classCd* cd);
  // Leaves cd on the file's disc, cd->dirs() on its folder and *file on the
  // file (bound to the folder's chain or to its archive's member chain).
  Status FindFile(int32_t id, classCd* cd, ClassFile* file);

  struct PhysicalSize {
    int64_t bytesUsed = 0;   // header, categories and discs with all they hold
    int64_t fileLength = 0;
    int64_t garbage = 0;     // what compacting would reclaim
  };
  // "Calculating Data Size": sums the bytes used of the header, every category
  // and every disc and sets them against the file length. Cancelled when the
  // job's stop was asked.
  Status CalcPhysicalSize(PhysicalSize* out, JobControl& job);
  Status CalcPhysicalSize(PhysicalSize* out) {
    JobControl none;
    return CalcPhysicalSize(out, none);
  }

  // Header texts.
  std::string GetDataName() const { return Text(file_->header().name); }
  std::string GetDataNotes() const { return Text(file_->header().notes); }
  std::string GetDataExtra() const { return Text(file_->header().extra); }
  std::string GetDataFont() const { return Text(file_->header().font); }
  std::string GetDataIconKey() const { return Text(file_->header().iconKey); }
  // The password in clear (stored scrambled by Cipher).
  std::string GetDataPassword() const;
  bool SetDataName(const std::string& v) { return SetText(&file_->header().name, v); }
  bool SetDataNotes(const std::string& v) { return SetText(&file_->header().notes, v); }
  bool SetDataExtra(const std::string& v) { return SetText(&file_->header().extra, v); }
  bool SetDataFont(const std::string& v) { return SetText(&file_->header().font, v); }
  bool SetDataIconKey(const std::string& v) { return SetText(&file_->header().iconKey, v); }
  bool SetDataPassword(const std::string& clear);

  // The font the catalog is shown in: its font text, or the default.
  std::string DisplayFont() const;

  // Writes what is buffered; Sync also forces it to the disk.
  bool Flush();
  bool Sync();

  // The open file as the cursors see it (for cursors of one's own).
  CatalogFile* file() { return file_.get(); }
  // True while no read or write has failed since the catalog was opened.
  bool ok() const { return file_ && file_->ok(); }
  Status status() const;

 private:
  std::string Text(const TextRef& ref) const;
  bool SetText(TextRef* ref, const std::string& value);
  bool Refuse(int error, const std::string& detail);
  void CreateHeader();

  std::unique_ptr<CatalogFile> file_;
  int error_ = kNoError;
  bool readOnly_ = false;
  std::string errorDetail_;
  std::string fileName_;
  PasswordPrompt passwordPrompt_;
  TextEncoding newEncoding_ = TextEncoding::kUtf8;
};

}  // namespace gorvan
