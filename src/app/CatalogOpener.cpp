#include "app/CatalogOpener.h"

#include <unistd.h>

#include "catalog/PasswordCheck.h"
#include "catalog/ReadOnlyCheck.h"

namespace gorvan {

classData::PasswordPrompt CatalogOpener::PasswordPromptFor(Prompt& prompt,
                                                           const OpenOptions& options) {
  return [&prompt, options](const std::string& current) {
    if (options.passwordGiven) {
      const auto r = PasswordCheck::AskPassword(options.password, current);
      if (r == PasswordCheck::Result::kPassed) return true;
      prompt.Message(PasswordCheck::Message(r), PromptIcon::kWarning);
      return false;
    }
    return prompt.AskPassword(false, [&current](const PasswordFields& f) {
      return std::string(PasswordCheck::Message(PasswordCheck::AskPassword(f.entered, current)));
    });
  };
}

OpenOutcome CatalogOpener::Open(const std::string& path, Prompt& prompt,
                                const OpenOptions& options) {
  OpenOutcome out;
  if (options.mustExist && ::access(path.c_str(), F_OK) != 0) {
    out.status = Status::NotFound("There is no catalog " + path);
    out.message = out.status.message();
    return out;
  }
  std::string why;
  if (!ReadOnlyCheck::Run(path, [&prompt](const std::string& q) { return prompt.YesNo(q); },
                          &why)) {
    out.status = Status::Refused(why.empty() ? path + " is read-only and was not opened" : why);
    out.message = out.status.message();
    return out;
  }
  auto data = std::make_unique<classData>();
  data->SetNewCatalogEncoding(options.newEncoding);
  data->SetPasswordPrompt(PasswordPromptFor(prompt, options));
  if (!data->OpenFiles(path, /*askPassword=*/true, /*setDefaults=*/true)) {
    out.error = data->GetError();
    switch (out.error) {
      case classData::kPasswordNotGiven:
        out.status = Status::Refused(kLogonDenied);
        out.message = kLogonDenied;
        break;
      case classData::kDataFileError:
        out.status = Status::Corruption(data->GetErrorText());
        out.message = data->GetErrorText();
        break;
      case classData::kCannotOpen:
        out.status = Status::IOError(data->GetErrorText());
        out.message = data->GetErrorText();
        break;
      default:
        out.status = Status::Refused(data->GetErrorText());
        out.message = data->GetErrorText();
    }
    return out;
  }
  // A long-lived program re-arms the budget before each full walk; a one-shot
  // command's walks all count against this one.
  data->file()->ArmWalkBudget();
  out.data = std::move(data);
  return out;
}

}  // namespace gorvan
