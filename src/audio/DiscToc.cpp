#include "audio/DiscToc.h"

#include "audio/AudioText.h"

namespace gorvan {

bool DiscToc::FromContents(std::string_view contents, DiscToc* toc, std::string* error) {
  *toc = DiscToc();
  std::vector<int64_t> values;
  std::string_view rest = AudioText::Trim(contents);
  while (!rest.empty()) {
    size_t end = 0;
    while (end < rest.size() && rest[end] != ' ' && rest[end] != '\t') ++end;
    int64_t v = 0;
    if (!AudioText::ParseDecimal(rest.substr(0, end), &v)) {
      *error = "\"" + std::string(rest.substr(0, end)) + "\" is not a frame offset";
      return false;
    }
    // More values than a disc can hold are refused by Check(); keep one more
    // than the limit so that it can say so, and no more.
    if (values.size() <= kMaxTracks + 1) values.push_back(v);
    rest = AudioText::Trim(rest.substr(end));
  }
  if (values.empty()) {
    *error = "The table of contents is empty";
    return false;
  }
  for (size_t i = 0; i + 1 < values.size(); ++i) {
    toc->tracks.push_back({static_cast<int>(i + 1), static_cast<int32_t>(values[i]), 0});
  }
  toc->leadOut = static_cast<int32_t>(values.back());
  return true;
}

Status DiscToc::Check() const {
  if (tracks.empty()) return Status::InvalidArgument("The disc has no tracks");
  if (tracks.size() > kMaxTracks) {
    return Status::InvalidArgument("The disc has more than 99 tracks");
  }
  if (tracks.front().number < 1 || tracks.back().number > kMaxTracks) {
    return Status::InvalidArgument("Track numbers must lie between 1 and 99");
  }
  if (tracks.front().offset < 0) return Status::InvalidArgument("A track starts before the disc");
  for (size_t i = 1; i < tracks.size(); ++i) {
    if (tracks[i].number != tracks[i - 1].number + 1) {
      return Status::InvalidArgument("Track numbers are not consecutive");
    }
    if (tracks[i].offset <= tracks[i - 1].offset) {
      return Status::InvalidArgument("Track " + std::to_string(tracks[i].number) +
                                     " starts before the track ahead of it");
    }
  }
  if (leadOut <= tracks.back().offset) {
    return Status::InvalidArgument("The lead-out comes before the end of the last track");
  }
  return Status::OK();
}

std::string DiscToc::Contents() const {
  if (tracks.empty()) return "";
  std::string out;
  for (const TocTrack& t : tracks) {
    out += std::to_string(t.offset);
    out += ' ';
  }
  out += std::to_string(leadOut);
  return out;
}

int DiscToc::AudioTrackCount() const {
  int n = 0;
  for (const TocTrack& t : tracks) n += t.IsAudio() ? 1 : 0;
  return n;
}

int32_t DiscToc::TrackSeconds(int i) const {
  if (i < 0 || i >= TrackCount()) return 0;
  const int32_t end = i + 1 < TrackCount() ? tracks[i + 1].offset : leadOut;
  const int32_t frames = end - tracks[i].offset;
  return frames > 0 ? frames / kFramesPerSecond : 0;
}

int32_t DiscToc::AlbumSeconds() const {
  if (tracks.empty()) return 0;
  const int32_t t = leadOut / kFramesPerSecond - tracks.front().offset / kFramesPerSecond;
  return t > 0 ? t : 0;
}

DiscToc DiscToc::AudioSession() const {
  size_t audio = tracks.size();
  while (audio > 0 && !tracks[audio - 1].IsAudio()) --audio;
  if (audio == tracks.size() || audio == 0) return *this;
  DiscToc session;
  session.tracks.assign(tracks.begin(), tracks.begin() + static_cast<std::ptrdiff_t>(audio));
  session.leadOut = tracks[audio].offset - kSessionGap;
  return session;
}

}  // namespace gorvan
