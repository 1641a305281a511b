#include "catalog/Cipher.h"

namespace gorvan {
namespace {

constexpr int kRange = 95;  // characters 32..126

int Shift(size_t index) { return static_cast<int>((17 + 7 * (index % kRange)) % kRange); }

std::string Rotate(std::string_view text, int direction) {
  std::string out(text);
  for (size_t i = 0; i < out.size(); ++i) {
    const auto c = static_cast<unsigned char>(out[i]);
    if (c < 32 || c > 126) continue;
    const int rotated = (c - 32 + direction * Shift(i) + kRange) % kRange;
    out[i] = static_cast<char>(32 + rotated);
  }
  return out;
}

}  // namespace

std::string Cipher::Scramble(std::string_view clear) { return Rotate(clear, 1); }
std::string Cipher::Unscramble(std::string_view scrambled) { return Rotate(scrambled, -1); }

}  // namespace gorvan
