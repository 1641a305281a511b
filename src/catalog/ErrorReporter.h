#pragma once
// ErrorReporter: where every layer hands the failures it traps. The application
// layer installs a sink that appends them to the error log; without one they
// are dropped. Modes: 1 offer to send the log, 2 offer and return to the main
// window, 3 log only.

#include <functional>
#include <string_view>

namespace gorvan {

using ErrorSink = std::function<void(std::string_view routine, int number,
                                     std::string_view description, int mode)>;

void SetErrorSink(ErrorSink sink);
void ReportError(std::string_view routine, int number, std::string_view description,
                 int mode = 1);

}  // namespace gorvan
