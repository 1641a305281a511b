#pragma once
// IconKeys: the icon keys a disc can name. Each media type has its own key; the
// user may pick any other known icon, and the desktop program registers the
// keys of the icons it ships.

#include <string>
#include <string_view>

namespace gorvan {

class IconKeys {
 public:
  // The key of a media icon type (the result of GetCdTypeExt).
  static std::string_view ForMediaType(int typeExt);
  static bool IsKnown(std::string_view key);
  static void Register(std::string_view key);
};

}  // namespace gorvan
