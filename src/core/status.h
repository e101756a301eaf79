// The one shape of an expected failure: a Status says whether an operation
// worked and, when it did not, why, in words fit for the log (and the system
// error behind it, when there is one). Expected<T> is a value or the Status
// that explains its absence. Unexpected failures stay exceptions and are
// caught at the edge of each handler.
#pragma once

#include <optional>
#include <string>
#include <system_error>
#include <utility>

namespace brindle {

class [[nodiscard]] Status {
 public:
  Status() = default;  // success
  static Status Ok() { return {}; }
  static Status Error(std::string what, std::error_code code = {}) {
    return Status(std::move(what), code);
  }
  // From a system error alone; success when code is empty.
  static Status FromCode(const std::error_code& code, std::string what = {}) {
    return code ? Status(std::move(what), code) : Status();
  }

  bool ok() const { return !failed_; }
  const std::error_code& code() const { return code_; }
  // "what: the system's reason", or either part alone; empty on success.
  std::string message() const {
    if (!failed_) return {};
    if (!code_) return what_;
    return what_.empty() ? code_.message() : what_ + ": " + code_.message();
  }

 private:
  Status(std::string what, std::error_code code)
      : failed_(true), what_(std::move(what)), code_(code) {}

  bool failed_ = false;
  std::string what_;
  std::error_code code_;
};

template <typename T>
class [[nodiscard]] Expected {
 public:
  Expected(T value) : value_(std::move(value)) {}           // NOLINT: a value converts
  Expected(Status failure) : status_(std::move(failure)) {  // NOLINT: so does a failure
    if (status_.ok()) status_ = Status::Error("no value");
  }

  bool ok() const { return value_.has_value(); }
  const Status& status() const { return status_; }
  // Throws std::bad_optional_access when there is no value.
  T& value() & { return value_.value(); }
  const T& value() const& { return value_.value(); }
  T&& value() && { return std::move(value_.value()); }
  T value_or(T fallback) const& { return value_ ? *value_ : std::move(fallback); }
  T* operator->() { return &*value_; }
  const T* operator->() const { return &*value_; }
  T& operator*() & { return *value_; }
  const T& operator*() const& { return *value_; }

 private:
  std::optional<T> value_;
  Status status_;
};

}  // namespace brindle
