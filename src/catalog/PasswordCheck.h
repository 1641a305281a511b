#pragma once
// PasswordCheck: the rules of the password dialog, apart from the dialog, so the
// desktop program and the command line apply the same ones. Every field is
// trimmed of surrounding blanks first.

#include <string>
#include <string_view>

namespace gorvan {

class PasswordCheck {
 public:
  enum class Result { kPassed, kInvalidCharacters, kWrongPassword, kNotIdentical };

  // Only characters with codes 32 to 127; the empty text passes.
  static bool isValidPassword(std::string_view text);
  // The message the dialog shows for a result ("" for kPassed).
  static const char* Message(Result r);

  // The user typed entered; current is the catalog's password.
  static Result AskPassword(std::string_view entered, std::string_view current);
  // On kPassed, *newPassword receives the (trimmed) new password.
  static Result ChangePassword(std::string_view entered, std::string_view new1,
                               std::string_view new2, std::string_view current,
                               std::string* newPassword);

};

}  // namespace gorvan
