// What went wrong, as a value: the core returns it and the window or the
// command line shows it. `reason` is the whole text the user reads; the kind
// picks how it is shown (the general error box, a warning or a note with its
// own title, or nothing but a fresh look at the lists when a file has gone).
#pragma once

#include <cassert>
#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace trel {

enum class ErrorKind {
  Fault,        // the program's general error box, or a critical box titled `title`
  Warning,      // an exclamation box titled `title`
  Information,  // an information box titled `title`
  Gone,         // the file is no longer there: nothing to tell, the lists are stale
};

struct Error {
  ErrorKind kind = ErrorKind::Fault;
  std::string reason;  // the text shown, complete
  std::string title;   // the box's title; empty for the general error box
  std::string path;    // the file or folder concerned, when there is one
  int line = 0;        // 1-based line in `path`, 0 when it does not apply

  static Error Fault(std::string reason, std::string path = {}) {
    return {ErrorKind::Fault, std::move(reason), {}, std::move(path), 0};
  }
  static Error Warning(std::string reason, std::string title, std::string path = {}) {
    return {ErrorKind::Warning, std::move(reason), std::move(title), std::move(path), 0};
  }
  static Error Information(std::string reason, std::string title) {
    return {ErrorKind::Information, std::move(reason), std::move(title), {}, 0};
  }
  static Error Gone(std::string path) {
    return {ErrorKind::Gone, {}, {}, std::move(path), 0};
  }
};

// A result or the Error that stopped it. Reading the value of an error (or
// the error of a value) is a programming fault and asserts.
template <class T>
class [[nodiscard]] Expected {
 public:
  Expected(T value) : v_(std::move(value)) {}          // NOLINT: implicit on purpose
  Expected(Error error) : v_(std::move(error)) {}      // NOLINT
  bool ok() const { return v_.index() == 0; }
  explicit operator bool() const { return ok(); }
  T& value() { assert(ok()); return std::get<0>(v_); }
  const T& value() const { assert(ok()); return std::get<0>(v_); }
  T& operator*() { return value(); }
  const T& operator*() const { return value(); }
  T* operator->() { return &value(); }
  const T* operator->() const { return &value(); }
  const Error& error() const { assert(!ok()); return std::get<1>(v_); }

 private:
  std::variant<T, Error> v_;
};

// Work that yields nothing but may fail. Default-constructed means done.
template <>
class [[nodiscard]] Expected<void> {
 public:
  Expected() = default;
  Expected(Error error) : error_(std::move(error)) {}  // NOLINT
  bool ok() const { return !error_; }
  explicit operator bool() const { return ok(); }
  const Error& error() const { assert(!ok()); return *error_; }

 private:
  std::optional<Error> error_;
};

}  // namespace trel
