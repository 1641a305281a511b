#include "audio/AudioText.h"

#include "catalog/TextCodec.h"

namespace gorvan {
namespace {

bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

char LowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

}  // namespace

std::string_view AudioText::Trim(std::string_view text) {
  while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsSpace(text.back())) text.remove_suffix(1);
  return text;
}

std::vector<std::string_view> AudioText::SplitLines(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    lines.push_back(line);
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 1);
  }
  return lines;
}

bool AudioText::ParseDecimal(std::string_view text, int64_t* value) {
  if (text.empty() || text.size() > 9) return false;
  int64_t v = 0;
  for (char c : text) {
    if (c < '0' || c > '9') return false;
    v = v * 10 + (c - '0');
  }
  *value = v;
  return true;
}

std::string AudioText::ToUtf8(std::string_view bytes) {
  if (TextCodec::IsValidUtf8(bytes)) return std::string(bytes);
  // Windows-1252 is Latin-1 with printable characters where Latin-1 has C1
  // controls; entries submitted from Windows used them for quotes and dashes.
  std::string out;
  TextCodec::Windows1252ToUtf8(bytes, &out);
  return out;
}

bool AudioText::StartsWithNoCase(std::string_view text, std::string_view prefix) {
  if (text.size() < prefix.size()) return false;
  for (size_t i = 0; i < prefix.size(); ++i) {
    if (LowerAscii(text[i]) != LowerAscii(prefix[i])) return false;
  }
  return true;
}

}  // namespace gorvan
