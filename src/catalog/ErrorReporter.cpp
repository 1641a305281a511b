#include "catalog/ErrorReporter.h"

#include <mutex>

namespace gorvan {
namespace {

std::mutex& SinkMutex() {
  static std::mutex m;
  return m;
}

ErrorSink& Sink() {
  static ErrorSink sink;
  return sink;
}

}  // namespace

void SetErrorSink(ErrorSink sink) {
  std::lock_guard<std::mutex> lock(SinkMutex());
  Sink() = std::move(sink);
}

void ReportError(std::string_view routine, int number, std::string_view description, int mode) {
  std::lock_guard<std::mutex> lock(SinkMutex());
  if (Sink()) Sink()(routine, number, description, mode);
}

}  // namespace gorvan
