#include "catalog/PasswordCheck.h"

#include "catalog/TextUtil.h"

namespace gorvan {

bool PasswordCheck::isValidPassword(std::string_view text) {
  for (char c : text) {
    const auto b = static_cast<unsigned char>(c);
    if (b < 32 || b > 127) return false;
  }
  return true;
}

const char* PasswordCheck::Message(Result r) {
  switch (r) {
    case Result::kPassed:
      return "";
    case Result::kInvalidCharacters:
      return "Invalid Characters !!";
    case Result::kWrongPassword:
      return "Invalid or Wrong Password !!";
    case Result::kNotIdentical:
      return "The new passwords are not identical !!";
  }
  return "";
}

PasswordCheck::Result PasswordCheck::AskPassword(std::string_view entered,
                                                 std::string_view current) {
  entered = Trim(entered);
  if (!isValidPassword(entered)) return Result::kInvalidCharacters;
  return entered == current ? Result::kPassed : Result::kWrongPassword;
}

PasswordCheck::Result PasswordCheck::ChangePassword(std::string_view entered,
                                                    std::string_view new1,
                                                    std::string_view new2,
                                                    std::string_view current,
                                                    std::string* newPassword) {
  entered = Trim(entered);
  new1 = Trim(new1);
  new2 = Trim(new2);
  if (!isValidPassword(entered) || !isValidPassword(new1) || !isValidPassword(new2)) {
    return Result::kInvalidCharacters;
  }
  if (entered != current) return Result::kWrongPassword;
  if (new1 != new2) return Result::kNotIdentical;
  newPassword->assign(new1);
  return Result::kPassed;
}

}  // namespace gorvan
