// gorvan-cli create, info, ls, dump and check.
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <iostream>

#include "catalog/CatalogCheck.h"
#include "catalog/DiscTree.h"
#include "catalog/TextFormat.h"
#include "cli/CliContext.h"
#include "cli/Commands.h"
#include "cli/TerminalJob.h"

namespace gorvan::cli {
namespace {

using nlohmann::json;

std::string ShownPath(std::string path) {
  std::replace(path.begin(), path.end(), '\\', '/');
  return path;
}

int Create(CliContext& ctx, const std::string& file, bool ansi) {
  struct stat st;
  if (::stat(file.c_str(), &st) == 0) return ctx.Fail(file + " already exists");
  classData data;
  data.SetNewCatalogEncoding(ansi ? TextEncoding::kWindows1252 : TextEncoding::kUtf8);
  if (!data.OpenFiles(file, false, true)) return ctx.Fail(data.GetErrorText());
  if (!data.Sync()) return ctx.Fail(data.status());
  return kExitOk;
}

int Info(CliContext& ctx) {
  int code = 0;
  classData* data = ctx.Open(&code);
  if (!data) return code;
  const HeaderRecord& h = data->GetTableHeader();
  classData::PhysicalSize size;
  {
    TerminalJob terminal(ctx.quiet, TerminalJob::PercentLine);
    if (Status st = data->CalcPhysicalSize(&size, terminal.job()); !st.ok()) return ctx.Fail(st);
  }
  std::cout << "file: " << data->GetDataFileName() << "\n"
            << "name: " << TsvEscape(data->GetDataName()) << "\n"
            << "version: " << h.versionMajor << "." << h.versionMinor << "." << h.versionRevision
            << "\n"
            << "encoding: " << (h.IsUtf8() ? "UTF-8" : "Windows-1252") << "\n"
            << "created: " << FormatGeneralDate(h.created) << "\n"
            << "last opened: " << FormatGeneralDate(h.lastOpened) << "\n"
            << "password: " << (h.password.count > 0 ? "yes" : "no") << "\n"
            << "discs: " << h.cdCount << "\n"
            << "categories: " << h.catCount << "\n"
            << "file length: " << size.fileLength << "\n"
            << "bytes used: " << size.bytesUsed << "\n"
            << "garbage: " << size.garbage << "\n";
  return ctx.Finish();
}

int ListDiscs(classData& data) {
  classCd cd = data.CdCursor();
  for (cd.MoveFirst(); !cd.isEof(); cd.MoveNext()) {
    std::cout << cd.GetCdId() << '\t' << TsvEscape(cd.GetCdName(true)) << '\t'
              << cd.GetCdCategory() << '\t' << cd.GetCdMediaType() << '\t'
              << cd.GetCdNumOfSubdirs() << '\t' << cd.GetCdNumOfFiles() << '\t'
              << FormatNumber(cd.GetCdtotalSize()) << '\t' << TsvEscape(cd.GetCdLabel()) << '\n';
  }
  return 0;
}

int ListFolders(CliContext& ctx, classData& data, int32_t discId) {
  classCd cd = data.CdCursor();
  if (Status s = data.FindCd(discId, &cd); !s.ok()) return ctx.Fail(s);
  for (classDir& dir = cd.GetDirFirst(); !dir.isEof(); cd.GetDirNext()) {
    // A scan stores folder sizes negated; every display shows them as they are.
    std::cout << dir.GetDirId() << '\t' << TsvEscape(ShownPath(dir.GetDirFullName())) << '\t'
              << dir.GetDirCountOfFilesDirect() << '\t'
              << FormatNumber(std::fabs(dir.GetDirSize())) << '\t'
              << FormatGeneralDate(dir.GetDirDate()) << '\n';
  }
  return 0;
}

// One folder a line, depth first: id, a tab, two blanks per level, the name; a
// nameless root (a whole volume) shows as "/". A damaged chain prints what was
// read, and Finish() then reports the data-file error.
int ListTree(CliContext& ctx, classData& data, int32_t discId) {
  classCd cd = data.CdCursor();
  if (Status s = data.FindCd(discId, &cd); !s.ok()) return ctx.Fail(s);
  DiscTree tree;
  (void)tree.Build(data.file(), discId);  // the file keeps the error for Finish()
  std::string line;
  tree.VisitDepthFirst([&](int32_t node) {
    line.assign(std::to_string(tree.folderId(node))).append(1, '\t');
    line.append(2 * static_cast<size_t>(tree.depth(node)), ' ');
    const std::string_view name = tree.name(node);
    line.append(name.empty() && node == tree.root() ? "/" : TsvEscape(name));
    std::cout << line << '\n';
  });
  return 0;
}

int ListFiles(CliContext& ctx, classData& data, int32_t discId, int32_t dirId) {
  classCd cd = data.CdCursor();
  Status s = data.FindDir(dirId, &cd);
  if (s.ok() && cd.GetCdId() != discId) s = Status::NotFound("");
  if (!s.ok()) {
    if (!s.IsNotFound()) return ctx.Fail(s);
    return ctx.Fail("There is no folder " + std::to_string(dirId) + " on disc " +
                    std::to_string(discId));
  }
  classDir& dir = cd.dirs();
  for (ClassFile& f = dir.GetFileFirst(); !f.isEof(); dir.GetFileNext()) {
    std::cout << f.GetFileId() << '\t' << TsvEscape(f.GetFileName()) << '\t'
              << FormatNumber(f.GetFileSize()) << '\t' << FormatGeneralDate(f.GetFileDate())
              << '\t' << f.getFileAttr() << '\n';
  }
  return 0;
}

int List(CliContext& ctx, const std::vector<int32_t>& ids, bool tree) {
  if (tree && ids.size() != 1) return ctx.Fail("ls --tree takes one disc id", kExitUsage);
  int code = 0;
  classData* data = ctx.Open(&code);
  if (!data) return code;
  if (tree) {
    code = ListTree(ctx, *data, ids[0]);
  } else if (ids.empty()) {
    code = ListDiscs(*data);
  } else if (ids.size() == 1) {
    code = ListFolders(ctx, *data, ids[0]);
  } else {
    code = ListFiles(ctx, *data, ids[0], ids[1]);
  }
  if (code != 0) return code;
  return ctx.Finish();
}

void Print(const json& j) {
  std::cout << j.dump(-1, ' ', false, json::error_handler_t::replace) << '\n';
}

json FileJson(ClassFile& f, const char* kind) {
  const FileRecord& r = f.record();
  return {{"kind", kind},         {"id", r.id},
          {"dir", r.dirId},       {"disc", r.cdId},
          {"next", r.next},       {"prev", r.prev},
          {"firstMember", r.firstZip}, {"lastMember", r.lastZip},
          {"size", r.size},       {"date", r.date},
          {"attr", r.attr},       {"path", f.GetFilePath()},
          {"name", f.GetFileName()}, {"notes", f.GetFileNotes()},
          {"extra", f.GetFileExtra()}};
}

int Dump(CliContext& ctx) {
  int code = 0;
  classData* data = ctx.Open(&code);
  if (!data) return code;
  const HeaderRecord& h = data->GetTableHeader();
  Print({{"kind", "header"},
         {"id", 1},
         {"versionMajor", h.versionMajor},
         {"versionMinor", h.versionMinor},
         {"versionRevision", h.versionRevision},
         {"created", h.created},
         {"firstDisc", h.firstCd},
         {"lastDisc", h.lastCd},
         {"firstCategory", h.firstCat},
         {"lastCategory", h.lastCat},
         {"discCount", h.cdCount},
         {"categoryCount", h.catCount},
         {"lastOpened", h.lastOpened},
         {"encoding", h.IsUtf8() ? "UTF-8" : "Windows-1252"},
         {"bytesUsed", h.bytesUsed},
         {"font", data->GetDataFont()},
         {"name", data->GetDataName()},
         {"notes", data->GetDataNotes()},
         {"extra", data->GetDataExtra()},
         {"iconKey", data->GetDataIconKey()},
         {"hasPassword", h.password.count > 0}});
  classCat c = data->CatCursor();
  for (c.MoveFirst(); !c.isEof(); c.MoveNext()) {
    const CatRecord& r = c.record();
    Print({{"kind", "category"}, {"id", r.id}, {"next", r.next}, {"prev", r.prev},
           {"created", r.created}, {"name", c.GetCatName()}, {"notes", c.GetCatNotes()},
           {"extra", c.GetCatExtra()}, {"iconKey", c.GetCatIconKey()}, {"parent", r.parent},
           {"bytesUsed", r.bytesUsed}});
  }
  classCd cd = data->CdCursor();
  for (cd.MoveFirst(); !cd.isEof(); cd.MoveNext()) {
    const CdRecord& r = cd.record();
    Print({{"kind", "disc"}, {"id", r.id}, {"next", r.next}, {"prev", r.prev},
           {"firstDir", r.firstDir}, {"lastDir", r.lastDir}, {"name", cd.GetCdName()},
           {"notes", cd.GetCdNotes()}, {"label", cd.GetCdLabel()},
           {"basePath", cd.GetCdBasepath()}, {"totalSize", r.totalSize},
           {"freeSpace", r.freeSpace}, {"extra", cd.GetCdExtra()}, {"diskId", r.diskId},
           {"iconKey", cd.GetCdStoredIconKey()}, {"numOfSubdirs", r.numOfSubdirs},
           {"numOfFiles", r.numOfFiles}, {"lastScanned", r.lastScanned},
           {"mediaType", r.mediaType}, {"category", r.category}, {"bytesUsed", r.bytesUsed}});
    for (classDir& d = cd.GetDirFirst(); !d.isEof(); cd.GetDirNext()) {
      const DirRecord& dr = d.record();
      Print({{"kind", "folder"}, {"id", dr.id}, {"disc", dr.cdId}, {"next", dr.next},
             {"prev", dr.prev}, {"firstFile", dr.firstFile}, {"lastFile", dr.lastFile},
             {"size", dr.size}, {"date", dr.date}, {"attr", dr.attr}, {"path", d.GetDirPath()},
             {"name", d.GetDirName()}, {"notes", d.GetDirNotes()}, {"extra", d.GetDirExtra()},
             {"countOfFiles", dr.countOfFiles}, {"countOfDirs", dr.countOfDirs},
             {"countOfFilesDirect", dr.countOfFilesDirect}});
      for (ClassFile& f = d.GetFileFirst(); !f.isEof(); d.GetFileNext()) {
        Print(FileJson(f, "file"));
        if (!f.IsArchive()) continue;
        for (ClassFile& m = f.GetZipFirst(); !m.isEof(); f.GetZipNext()) Print(FileJson(m, "member"));
      }
    }
  }
  return ctx.Finish();
}

int Check(CliContext& ctx) {
  int code = 0;
  classData* data = ctx.Open(&code);
  if (!data) return code;
  CatalogCheck check(data->file());
  std::vector<std::string> problems;
  {
    TerminalJob terminal(ctx.quiet, TerminalJob::PercentLine);
    problems = check.Run(terminal.job());
  }
  if (check.stopped()) return ctx.Fail(Status::Cancelled("The check was stopped"));
  for (const std::string& p : problems) std::cout << TsvEscape(p) << '\n';
  if (!ctx.quiet) {
    std::cerr << check.records() << " records checked, " << problems.size() << " problem(s), "
              << check.garbage() << " bytes of garbage\n";
  }
  return problems.empty() ? kExitOk : kExitFailure;
}

}  // namespace

void AddCatalogCommands(CLI::App& app, CliContext& ctx, int* result) {
  auto* create = app.add_subcommand("create", "Create a new, empty catalog");
  static std::string createFile;
  static bool ansi = false;
  create->add_option("FILE", createFile, "The catalog file to create")->required();
  create->add_flag("--ansi", ansi, "Store texts as Windows-1252 instead of UTF-8");
  create->callback([&ctx, result] { *result = Create(ctx, createFile, ansi); });

  app.add_subcommand("info", "Show the catalog's header and totals")
      ->callback([&ctx, result] { *result = Info(ctx); });

  auto* ls = app.add_subcommand("ls", "List discs, the folders of a disc, or the files of a folder");
  static std::vector<int32_t> lsIds;
  static bool lsTree = false;
  ls->add_option("DISC_DIR", lsIds, "DISC [DIR]")->expected(0, 2);
  ls->add_flag("--tree", lsTree, "The folder tree of DISC, one folder a line");
  ls->callback([&ctx, result] { *result = List(ctx, lsIds, lsTree); });

  app.add_subcommand("dump", "Every live record in chain order, as JSON Lines")
      ->callback([&ctx, result] { *result = Dump(ctx); });

  app.add_subcommand("check", "Verify every chain, link, text and count")
      ->callback([&ctx, result] { *result = Check(ctx); });
}

}  // namespace gorvan::cli
