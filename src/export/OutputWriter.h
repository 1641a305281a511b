#pragma once
// OutputWriter: the one writer every export goes through. It writes text line
// by line, each line ended by CR LF (or another ending the caller chooses), in
// the text encoding the caller chooses: UTF-8 as the program holds text, or
// Windows-1252 for readers that expect the legacy code page, where a character
// the code page cannot hold is written as "?" and counted (replacements()).
//
// Lines collect in a buffer and reach the file in large writes; Flush() pushes
// them out at once (a live listing on a terminal).
//
// A file is written beside its target ("<target>.part") and renamed over the
// target by Close(), so an export that fails or is abandoned never leaves a
// half-written file under the target's name and never destroys the file that
// was there. Writing to a descriptor (standard output) writes straight to it.
//
// Errors are sticky: after the first failed write every call fails and
// Close() reports it.

#include <cstddef>
#include <string>
#include <string_view>

#include "catalog/Status.h"
#include "catalog/TextCodec.h"

namespace gorvan {

class OutputWriter {
 public:
  static constexpr std::string_view kCrLf = "\r\n";
  static constexpr size_t kBufferSize = 256u << 10;

  OutputWriter() = default;
  ~OutputWriter();  // abandons an open file: the target stays as it was
  OutputWriter(const OutputWriter&) = delete;
  OutputWriter& operator=(const OutputWriter&) = delete;

  // Starts a file at path (created, or replaced by Close()).
  // On failure returns IOError with the system's reason.
  Status Open(const std::string& path, TextEncoding encoding = TextEncoding::kUtf8);
  // Writes to an open descriptor the caller keeps (e.g. 1 for standard output).
  Status OpenDescriptor(int fd, TextEncoding encoding = TextEncoding::kUtf8);

  void SetLineEnd(std::string_view end) { lineEnd_ = end; }

  // Writes text (UTF-8) followed by the line end. False once anything failed.
  bool WriteLine(std::string_view text);
  // Writes text without a line end.
  bool Write(std::string_view text);
  bool Flush();

  // Flushes, and for a file forces it to the disk and renames it into place.
  // Returns the first error of the writer's life, if any (the target then
  // stays as it was).
  Status Close();
  // Drops a file without touching the target.
  void Abandon();

  bool ok() const { return error_.ok(); }
  const Status& error() const { return error_; }
  size_t replacements() const { return replacements_; }

 private:
  bool WriteAll(const char* data, size_t n);

  int fd_ = -1;
  bool ownsFd_ = false;
  std::string target_;
  std::string partPath_;
  TextEncoding encoding_ = TextEncoding::kUtf8;
  std::string lineEnd_{kCrLf};
  std::string buffer_;
  std::string scratch_;
  size_t replacements_ = 0;
  Status error_;
};

}  // namespace gorvan
