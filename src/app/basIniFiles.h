#pragma once
// basIniFiles: the INI store. "Gorvan.ini" in the application folder holds the
// few switches that are read before anything else; other INI files may be
// named by the caller. Files are read and written the way profile files always
// were: section and key names compared ignoring ASCII case, blanks around keys
// and values ignored, a value in matching quotes read without them, one
// "key=value" line per key.
//
// Thread contract: any thread; a write replaces the file by an atomic rename,
// so a reader never sees half a file.

#include <cstddef>
#include <string>

namespace gorvan {

inline constexpr const char* kIniFileName = "Gorvan.ini";
// The file both routines use when the caller names none.
inline constexpr const char* kDefaultIniName = "Default.ini";
inline constexpr const char* kIniSwitches = "Switches";
// Values are read into a buffer of this many characters, its last one the
// terminating NUL: longer values are cut to 127 characters.
inline constexpr size_t kIniBufferSize = 128;
// Only this much of an INI file is read; a larger file cannot be rewritten.
inline constexpr size_t kMaxIniFileBytes = size_t{1} << 20;

// The value of key in section of file, or defaultValue when the file, the
// section or the key is missing. Either way the text is cut to 127
// characters, then at its first NUL, then trimmed of trailing blanks. file
// "" means "Default.ini"; a name without "/" is taken in the application
// folder.
std::string ReadIniString(const std::string& section, const std::string& key,
                          const std::string& defaultValue, const std::string& file = {});

// Sets key in section of file to value (line breaks in value become blanks),
// creating the file and the section when missing. On success returns true. On
// failure (unwritable folder, a file larger than kMaxIniFileBytes) the file
// stays as it was, the failure is logged under "basIniFiles.WriteIniString"
// and false is returned.
bool WriteIniString(const std::string& section, const std::string& key, const std::string& value,
                    const std::string& file = {});

// A switch of "Gorvan.ini": key in section "Switches", read as true only when
// its lower-cased text is "true".
bool GetIniBool(const std::string& key, bool defaultValue);

}  // namespace gorvan
