/// Error codes, exceptions and results: how the C++ classes of the library report failures.
#ifndef VORNATH_DATA_RESULT_HPP
#define VORNATH_DATA_RESULT_HPP

#include <cstddef>
#include <cstdint>
#include <exception>
#include <optional>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

#include "vornath_data/api.h"

/// Thrown on API misuse: a flat accessor was called with a type of a kind that it does not accept.
/// This class has no message of its own. The library throws a derived class, whose what() names the
/// function and the type that it was given.
class VRNT_API VornathValuesAssertionFailure : public std::exception {
 public:
  VornathValuesAssertionFailure() noexcept = default;
  VornathValuesAssertionFailure(const VornathValuesAssertionFailure&) noexcept = default;
  VornathValuesAssertionFailure& operator=(const VornathValuesAssertionFailure&) noexcept = default;
  ~VornathValuesAssertionFailure() override;
};

namespace vrnt {

/// The kinds of failure. The codes are stable; 23 is not used.
enum class ErrorCode : std::int32_t {
  NoError = 0,
  InvalidArguments = 1,
  InvalidOperation = 2,
  NotSupported = 3,
  ParseFailed = 4,
  CompilationFailed = 5,
  BufferTypeMismatch = 6,
  InvalidPath = 7,
  DirectoryNotFound = 8,
  FileNotFound = 9,
  IoError = 10,
  AccessDenied = 11,
  ConnectionFailed = 12,
  TimedOut = 13,
  MissingBufferBinding = 14,
  CpuNotSupported = 15,
  GpuNotSupported = 16,
  OutOfGraphicsMemory = 17,
  VersionMismatch = 18,
  InternalError = 19,
  MemoryAllocationFailure = 20,
  UnrecoverableState = 21,
  Cancelled = 22,
  StringEncodingError = 24,
  UnknownError = 25
};

/// An error code with an optional message. An empty message is stored as none.
/// Owns the message. A copy duplicates it; a move takes it and leaves the source without one.
class VRNT_API ErrorRecord {
 public:
  ErrorRecord() noexcept = default;

  /// Copies `text`, which may be null or empty for no message. Throws std::bad_alloc.
  explicit ErrorRecord(ErrorCode code, std::string_view text = {});

  ErrorRecord(const ErrorRecord& other);
  ErrorRecord(ErrorRecord&& other) noexcept;
  ErrorRecord& operator=(const ErrorRecord& other);
  ErrorRecord& operator=(ErrorRecord&& other) noexcept;
  ~ErrorRecord();

  ErrorCode code() const noexcept { return code_; }

  /// Returns the message, zero-terminated, or null if there is none. Borrowed from the record.
  const char* message() const noexcept { return message_; }

  /// Returns the size of the message in bytes, without the terminator; 0 if there is none.
  std::uint64_t length() const noexcept { return length_; }

  /// Returns the message if there is one, else the fixed text of the code, for example "IO error".
  /// Never null.
  const char* text() const noexcept;

 private:
  ErrorCode code_ = ErrorCode::NoError;
  char* message_ = nullptr;
  std::uint64_t length_ = 0;
};

namespace detail {

/// One argument of a message format. It keeps the formatting library out of the public headers.
class FormatArgument {
 public:
  using Value =
      std::variant<bool, char, long long, unsigned long long, float, double, std::string_view>;

  template <typename T, std::enable_if_t<std::is_arithmetic_v<T>, int> = 0>
  FormatArgument(T value) noexcept  // NOLINT(google-explicit-constructor)
      : value_(std::in_place_type<Stored<T>>, static_cast<Stored<T>>(value)) {}
  template <typename T, std::enable_if_t<!std::is_arithmetic_v<T> &&
                                             std::is_convertible_v<const T&, std::string_view>,
                                         int> = 0>
  FormatArgument(const T& value)  // NOLINT(google-explicit-constructor)
      : value_(std::in_place_type<std::string_view>, value) {}

  const Value& value() const noexcept { return value_; }

 private:
  // bool, char and float have formats of their own. Other numbers print the same at every width.
  template <typename T>
  using Stored = std::conditional_t<
      std::is_same_v<T, bool> || std::is_same_v<T, char> || std::is_same_v<T, float>, T,
      std::conditional_t<std::is_floating_point_v<T>, double,
                         std::conditional_t<std::is_signed_v<T>, long long, unsigned long long>>>;

  Value value_;
};

}  // namespace detail

/// The exception that the library throws for its own errors. It holds one ErrorRecord.
class VRNT_API Exception : public std::exception {
 public:
  /// Copies `text`. If it is null or empty, there is no message, and what() returns the fixed text
  /// of the code.
  explicit Exception(ErrorCode code, const char* text = nullptr);
  Exception(ErrorCode code, std::string_view text);

  /// Formats the message: replaces each `{}` in `format` by one of one to three arguments, which
  /// are numbers or strings.
  template <typename A>
  Exception(ErrorCode code, const char* format, const A& a)
      : Exception(code, format, Args<1>{{a}}) {}
  template <typename A, typename B>
  Exception(ErrorCode code, const char* format, const A& a, const B& b)
      : Exception(code, format, Args<2>{{a, b}}) {}
  template <typename A, typename B, typename C>
  Exception(ErrorCode code, const char* format, const A& a, const B& b, const C& c)
      : Exception(code, format, Args<3>{{a, b, c}}) {}

  /// Takes over the record.
  explicit Exception(ErrorRecord&& record) noexcept;

  Exception(const Exception& other);
  Exception(Exception&& other) noexcept;
  Exception& operator=(const Exception& other);
  Exception& operator=(Exception&& other) noexcept;
  ~Exception() override;

  /// Returns the message if there is one, else the fixed text of the code.
  const char* what() const noexcept override;

  ErrorCode code() const noexcept { return record_.code(); }
  const ErrorRecord& record() const noexcept { return record_; }

 private:
  template <std::size_t N>
  struct Args {
    detail::FormatArgument items[N];
  };
  template <std::size_t N>
  Exception(ErrorCode code, const char* format, const Args<N>& args)
      : Exception(code, format, args.items, N) {}
  Exception(ErrorCode code, const char* format, const detail::FormatArgument* args,
            std::size_t count);

  ErrorRecord record_;
};

/// Holds either a T, or an ErrorRecord that tells why there is none. The code of a failure is never
/// NoError.
template <typename T>
class Result {
 public:
  Result(const T& value) : value_(value) {}                  // NOLINT(google-explicit-constructor)
  Result(T&& value) : value_(std::move(value)) {}            // NOLINT(google-explicit-constructor)
  Result(ErrorRecord&& error) : error_(std::move(error)) {}  // NOLINT(google-explicit-constructor)
  explicit Result(ErrorCode code, std::string_view text = {}) : error_(code, text) {}

  bool hasValue() const noexcept { return value_.has_value(); }
  explicit operator bool() const noexcept { return hasValue(); }

  /// Returns the T. If there is none, throws a vrnt::Exception with a copy of the record.
  T& value() & {
    require();
    return *value_;
  }
  const T& value() const& {
    require();
    return *value_;
  }
  T&& value() && {
    require();
    return *std::move(value_);
  }

  T& operator*() & { return value(); }
  const T& operator*() const& { return value(); }
  T&& operator*() && { return std::move(*this).value(); }
  T* operator->() { return &value(); }
  const T* operator->() const { return &value(); }

  /// Returns the record, borrowed from the result. On success its code is NoError and it has no
  /// message.
  const ErrorRecord& error() const noexcept { return error_; }

 private:
  void require() const {
    if (!value_) throw Exception(ErrorRecord(error_));
  }

  std::optional<T> value_;
  ErrorRecord error_;
};

}  // namespace vrnt

#endif
