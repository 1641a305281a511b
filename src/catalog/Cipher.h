#pragma once
// Cipher: the reversible scrambling of the catalog password field.
//
// Each printable ASCII character (32..126) is rotated within that range by an
// amount that depends on its position: c' = 32 + (c - 32 + 17 + 7*i) mod 95.
// Every other byte is kept. The result stays printable ASCII, so it is stored
// the same way in UTF-8 and Windows-1252 catalogs. This keeps the password out
// of plain sight in the file; it does not encrypt the catalog.

#include <string>
#include <string_view>

namespace gorvan {

class Cipher {
 public:
  static std::string Scramble(std::string_view clear);
  static std::string Unscramble(std::string_view scrambled);
};

}  // namespace gorvan
