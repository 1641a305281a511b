#pragma once
// MapIcons: the pictures of the icon map's keys. A key is the name of an
// icon of the desktop's theme ("audio-x-generic"), the full path of a
// picture file ("/home/ann/icons/raw.png"), or one of the keys the map is
// created with ("i_0143" and its kind), which stand for the theme's archive,
// document, spreadsheet and audio-track icons. Apply gives the explorer and
// the search results the map's icons, before the file types' own.
//
// Thread contract: the GUI thread.

#include <QIcon>
#include <QString>

namespace gorvan {
class IconMap;
}

namespace gorvan::ui {

class MapIcons {
 public:
  // The picture of key; a null icon when the key names none we can show (a
  // missing or unreadable file, a name the theme does not have).
  static QIcon IconOf(const QString& key);
  // What a key shows in a list: the kind for the map's own keys
  // ("Archive (i_0143)"), the file name for a picture, else the key.
  static QString Caption(const QString& key);
  // True when path is a picture file Qt can read.
  static bool IsPicture(const QString& path);
  // Makes the map's icons the file types' icons of the views.
  static void Apply(const IconMap& map);
};

}  // namespace gorvan::ui
