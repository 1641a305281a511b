// The ID3v1 reader on arbitrary file contents: whatever the last 128 bytes
// hold, loading never reads out of bounds and yields valid UTF-8 values that
// the setters' conversion maps back to at most a field's width.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "catalog/TextCodec.h"
#include "scan/clsID3.h"

namespace {

// Every value read from a tag is Windows-1252 converted to UTF-8, so it must
// convert back without a single replacement.
void CheckField(const std::string& value, std::size_t width) {
  std::string bytes;
  const std::size_t misses = gorvan::TextCodec::Utf8ToWindows1252(value, &bytes);
  if (misses != 0 || bytes.size() > width) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  std::string_view contents(reinterpret_cast<const char*>(data), size);
  gorvan::clsID3 id3;
  bool loaded = id3.LoadFromMemory(contents);
  if (loaded != (size >= 128 && contents.substr(size - 128, 3) == "TAG")) std::abort();
  if (loaded) {
    CheckField(id3.Title(), 30);
    CheckField(id3.Artist(), 30);
    CheckField(id3.Album(), 30);
    CheckField(id3.Year(), 4);
    CheckField(id3.Comment(), 30);
    if (id3.Genre() < 0 || id3.Genre() > 255) std::abort();
  }
  // Arbitrary bytes as if they were UTF-8 text typed into a setter.
  std::string back;
  gorvan::TextCodec::Utf8ToWindows1252(contents, &back);
  if (back.size() > contents.size()) std::abort();
  return 0;
}
