#pragma once
// Status: the outcome of an operation that can fail in an expected way.
// Failure is a value, and one that cannot be dropped unread ([[nodiscard]]):
// core functions return a Status (or a bool plus an error
// state, where the product's object model says so) and never exit or throw for
// damaged input, missing files or full disks.

#include <string>
#include <string_view>
#include <utility>

namespace gorvan {

class [[nodiscard]] Status {
 public:
  enum class Code {
    kOk = 0,
    kNotFound,         // a file or record that is not there
    kCorruption,       // the catalog's bytes break the format's rules
    kIOError,          // the operating system refused a read or write
    kInvalidArgument,  // the caller asked for something impossible
    kRefused,          // the catalog is not one we may open (format, version, password)
    kCancelled,        // the user stopped the operation
  };

  Status() = default;

  static Status OK() { return Status(); }
  static Status NotFound(std::string msg) { return Status(Code::kNotFound, std::move(msg)); }
  static Status Corruption(std::string msg) { return Status(Code::kCorruption, std::move(msg)); }
  static Status IOError(std::string msg) { return Status(Code::kIOError, std::move(msg)); }
  static Status InvalidArgument(std::string msg) {
    return Status(Code::kInvalidArgument, std::move(msg));
  }
  static Status Refused(std::string msg) { return Status(Code::kRefused, std::move(msg)); }
  static Status Cancelled(std::string msg = "Cancelled") {
    return Status(Code::kCancelled, std::move(msg));
  }

  bool ok() const { return code_ == Code::kOk; }
  bool IsNotFound() const { return code_ == Code::kNotFound; }
  bool IsCorruption() const { return code_ == Code::kCorruption; }
  bool IsIOError() const { return code_ == Code::kIOError; }
  bool IsInvalidArgument() const { return code_ == Code::kInvalidArgument; }
  bool IsRefused() const { return code_ == Code::kRefused; }
  bool IsCancelled() const { return code_ == Code::kCancelled; }

  Code code() const { return code_; }
  const std::string& message() const { return message_; }

 private:
  Status(Code code, std::string msg) : code_(code), message_(std::move(msg)) {}

  Code code_ = Code::kOk;
  std::string message_;
};

}  // namespace gorvan
