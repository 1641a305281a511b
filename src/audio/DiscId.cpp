#include "audio/DiscId.h"

#include <openssl/evp.h>

#include <cstdint>
#include <cstdio>
#include <vector>

#include "audio/AudioText.h"
#include "audio/DiscToc.h"

namespace gorvan {
namespace {

constexpr size_t kMaxPieces = 100;

int DigitSum(int64_t n) {
  int sum = 0;
  for (; n > 0; n /= 10) sum += static_cast<int>(n % 10);
  return sum;
}

// values: the track starts, then the lead-out; at least two of them.
std::string FreeDbFromValues(const std::vector<int64_t>& values) {
  const int64_t first = values.front() / DiscToc::kFramesPerSecond;
  const int64_t t = values.back() / DiscToc::kFramesPerSecond - first;
  if (t < 0 || t > 0xFFFF) return "";
  int64_t n = 0;
  for (size_t i = 0; i + 1 < values.size(); ++i) {
    n += DigitSum(values[i] / DiscToc::kFramesPerSecond);
  }
  const uint32_t id = static_cast<uint32_t>(n % 255) << 24 | static_cast<uint32_t>(t) << 8 |
                      static_cast<uint32_t>(values.size() - 1);
  char hex[9];
  std::snprintf(hex, sizeof hex, "%08x", id);
  return hex;
}

}  // namespace

std::string DiscId::FreeDb(std::string_view contents) {
  std::vector<int64_t> values;
  std::string_view rest = AudioText::Trim(contents);
  while (!rest.empty() && values.size() < kMaxPieces) {
    size_t end = rest.find(' ');
    if (end == std::string_view::npos) end = rest.size();
    int64_t v = 0;
    if (!AudioText::ParseDecimal(AudioText::Trim(rest.substr(0, end)), &v)) return "";
    values.push_back(v);
    rest = AudioText::Trim(rest.substr(end));
  }
  if (values.size() < 2) return "";
  return FreeDbFromValues(values);
}

std::string DiscId::FreeDb(const DiscToc& toc) {
  if (toc.tracks.empty()) return "";
  std::vector<int64_t> values;
  values.reserve(toc.tracks.size() + 1);
  for (const TocTrack& t : toc.tracks) values.push_back(t.offset);
  values.push_back(toc.leadOut);
  if (values.size() > kMaxPieces) values.resize(kMaxPieces);
  return FreeDbFromValues(values);
}

std::string DiscId::MusicBrainz(const DiscToc& toc) {
  if (!toc.Check().ok()) return "";
  // 2 + 2 + 8 + 99 * 8 hex digits.
  char text[2 + 2 + 8 + 99 * 8 + 1];
  int pos = std::snprintf(text, sizeof text, "%02X%02X%08X", toc.FirstTrack(), toc.LastTrack(),
                          static_cast<unsigned>(toc.leadOut));
  std::vector<int32_t> offsets(100, 0);
  for (const TocTrack& t : toc.tracks) offsets[static_cast<size_t>(t.number)] = t.offset;
  for (int i = 1; i <= 99; ++i) {
    pos += std::snprintf(text + pos, sizeof text - static_cast<size_t>(pos), "%08X",
                         static_cast<unsigned>(offsets[static_cast<size_t>(i)]));
  }
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned int digestLength = 0;
  if (EVP_Digest(text, static_cast<size_t>(pos), digest, &digestLength, EVP_sha1(), nullptr) != 1) {
    return "";
  }
  unsigned char base64[4 * ((EVP_MAX_MD_SIZE + 2) / 3) + 1];
  const int length = EVP_EncodeBlock(base64, digest, static_cast<int>(digestLength));
  std::string id(reinterpret_cast<const char*>(base64), static_cast<size_t>(length));
  for (char& c : id) {
    if (c == '+') c = '.';
    if (c == '/') c = '_';
    if (c == '=') c = '-';
  }
  return id;
}

}  // namespace gorvan
