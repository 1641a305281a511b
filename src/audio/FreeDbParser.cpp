#include "audio/FreeDbParser.h"

#include "audio/AudioText.h"

namespace gorvan {
namespace {

constexpr size_t kMaxSiteFields = 15;

bool StartsWith(std::string_view text, std::string_view prefix) {
  return text.substr(0, prefix.size()) == prefix;
}

// The next blank-separated word of *rest, which moves past it.
std::string_view NextWord(std::string_view* rest) {
  std::string_view r = *rest;
  while (!r.empty() && r.front() == ' ') r.remove_prefix(1);
  size_t end = r.find(' ');
  if (end == std::string_view::npos) end = r.size();
  const std::string_view word = r.substr(0, end);
  *rest = r.substr(end);
  return word;
}

bool ParseMatch(std::string_view line, QueryMatch* match) {
  std::string_view rest = line;
  const std::string_view category = NextWord(&rest);
  const std::string_view id = NextWord(&rest);
  if (category.empty() || id.empty()) return false;
  match->category = std::string(category);
  match->discId = std::string(id);
  match->title = std::string(AudioText::Trim(rest));
  return true;
}

void ReplaceAll(std::string* text, std::string_view from, std::string_view to) {
  std::string out;
  size_t pos = 0;
  for (size_t hit; (hit = text->find(from, pos)) != std::string::npos; pos = hit + from.size()) {
    out.append(*text, pos, hit - pos);
    out += to;
  }
  out.append(*text, pos, std::string::npos);
  *text = std::move(out);
}

}  // namespace

std::string FreeDbSite::ChooserText() const {
  static const std::string kEmpty;
  auto field = [this](size_t i) -> const std::string& {
    return i < fields.size() ? fields[i] : kEmpty;
  };
  std::string text = field(0) + "\t" + field(4) + "\t" + field(5);
  for (size_t i = 6; i < fields.size(); ++i) text += " " + fields[i];
  return text;
}

const std::string& FreeDbSite::Site() const {
  static const std::string kEmpty;
  return fields.empty() ? kEmpty : fields.front();
}

int FreeDbParser::StatusOf(std::string_view answer) {
  int64_t status = 0;
  if (answer.size() < 3 || !AudioText::ParseDecimal(answer.substr(0, 3), &status)) return 0;
  return static_cast<int>(status);
}

QueryAnswer FreeDbParser::ParseQueryAnswer(std::string_view answer) {
  QueryAnswer result;
  result.status = StatusOf(answer);
  const size_t end = answer.find('\n');
  result.statusLine = std::string(AudioText::Trim(answer.substr(0, end)));
  QueryMatch match;
  if (result.status == 200) {
    if (ParseMatch(std::string_view(result.statusLine).substr(3), &match)) {
      result.matches.push_back(std::move(match));
    }
  } else if (result.status == 210 || result.status == 211) {
    const std::vector<std::string_view> lines = AudioText::SplitLines(answer);
    for (size_t i = 1; i < lines.size() && result.matches.size() < kMaxMatches; ++i) {
      if (lines[i] == ".") break;
      if (ParseMatch(lines[i], &match)) result.matches.push_back(std::move(match));
    }
  }
  return result;
}

bool FreeDbParser::ParseEntry(std::string_view answer, const TitleRules& rules, DiscInfo* info) {
  if (StatusOf(answer) != 210) return false;
  const std::vector<std::string_view> lines = AudioText::SplitLines(answer);
  std::string title;
  std::string notes;
  std::string genre;
  for (size_t i = 1; i < lines.size(); ++i) {
    const std::string_view line = lines[i];
    if (line == ".") break;
    if (StartsWith(line, "# Revision:")) {
      info->revision = std::string(AudioText::Trim(line.substr(11)));
    } else if (StartsWith(line, "DYEAR=")) {
      info->year = std::string(AudioText::Trim(line.substr(6)));
    } else if (StartsWith(line, "DGENRE=")) {
      genre += line.substr(7);  // a long genre continues on a second line
    } else if (StartsWith(line, "DTITLE=")) {
      title += line.substr(7);
    } else if (StartsWith(line, "TTITLE")) {
      const size_t eq = line.find('=');
      int64_t n = 0;
      if (eq == std::string_view::npos || !AudioText::ParseDecimal(line.substr(6, eq - 6), &n) ||
          n >= static_cast<int64_t>(info->tracks.size())) {
        continue;
      }
      info->tracks[static_cast<size_t>(n)].title += line.substr(eq + 1);
    } else if (StartsWith(line, "EXTD=")) {
      notes += line.substr(5);
    }
  }
  SplitTitle(title, rules, &info->artist, &info->album);
  info->genre = std::move(genre);
  ReplaceAll(&notes, "\\n", "\r\n");
  info->notes = std::move(notes);
  return true;
}

void FreeDbParser::SplitTitle(std::string_view title, const TitleRules& rules, std::string* artist,
                              std::string* album) {
  auto split = [&](std::string_view separator, bool artistFirst) {
    if (separator.empty()) return false;
    const size_t at = title.find(separator);
    if (at == std::string_view::npos) return false;
    const std::string_view before = AudioText::Trim(title.substr(0, at));
    const std::string_view after = AudioText::Trim(title.substr(at + separator.size()));
    *artist = std::string(artistFirst ? before : after);
    *album = std::string(artistFirst ? after : before);
    return true;
  };
  if (split(" / ", true) || split(rules.artistBeforeIf, true) ||
      split(rules.artistAfterIf, false)) {
    return;
  }
  artist->clear();
  *album = std::string(AudioText::Trim(title));
}

std::vector<FreeDbSite> FreeDbParser::ParseSites(std::string_view answer) {
  std::vector<FreeDbSite> sites;
  if (StatusOf(answer) != 210) return sites;
  const std::vector<std::string_view> lines = AudioText::SplitLines(answer);
  for (size_t i = 1; i < lines.size(); ++i) {
    if (lines[i] == ".") break;
    FreeDbSite site;
    std::string_view rest = AudioText::Trim(lines[i]);
    while (!rest.empty()) {
      if (site.fields.size() + 1 == kMaxSiteFields) {
        site.fields.emplace_back(AudioText::Trim(rest));
        break;
      }
      site.fields.emplace_back(NextWord(&rest));
      rest = AudioText::Trim(rest);
    }
    if (!site.fields.empty()) sites.push_back(std::move(site));
  }
  return sites;
}

std::vector<std::string> FreeDbParser::EntryDiscIds(const std::vector<std::string_view>& lines) {
  std::vector<std::string> ids;
  for (std::string_view line : lines) {
    if (!StartsWith(line, "DISCID=")) continue;
    std::string_view rest = line.substr(7);
    while (!rest.empty()) {
      size_t comma = rest.find(',');
      if (comma == std::string_view::npos) comma = rest.size();
      std::string id(AudioText::Trim(rest.substr(0, comma)));
      for (char& c : id) c = (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : c;
      if (!id.empty()) ids.push_back(std::move(id));
      rest = comma < rest.size() ? rest.substr(comma + 1) : std::string_view();
    }
  }
  return ids;
}

std::string FreeDbParser::EntryTitle(const std::vector<std::string_view>& lines) {
  std::string title;
  for (std::string_view line : lines) {
    if (StartsWith(line, "DTITLE=")) title += line.substr(7);
  }
  return std::string(AudioText::Trim(title));
}

}  // namespace gorvan
