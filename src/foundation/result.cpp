#include "vornath_data/result.hpp"

#include <fmt/args.h>
#include <fmt/format.h>

#include <cstring>
#include <string>
#include <variant>

VornathValuesAssertionFailure::~VornathValuesAssertionFailure() = default;

namespace vrnt {
namespace {

const char* codeText(ErrorCode code) noexcept {
  switch (code) {
    case ErrorCode::NoError:
      return "No error";
    case ErrorCode::InvalidArguments:
      return "Input arguments are invalid";
    case ErrorCode::InvalidOperation:
      return "Invalid operation";
    case ErrorCode::NotSupported:
      return "Feature is not supported";
    case ErrorCode::ParseFailed:
      return "Parse failed";
    case ErrorCode::CompilationFailed:
      return "Compilation failed";
    case ErrorCode::BufferTypeMismatch:
      return "Buffer type does not match";
    case ErrorCode::InvalidPath:
      return "Invalid filesystem path";
    case ErrorCode::DirectoryNotFound:
      return "Directory not found";
    case ErrorCode::FileNotFound:
      return "File not found";
    case ErrorCode::IoError:
      return "IO error";
    case ErrorCode::AccessDenied:
      return "Access is denied";
    case ErrorCode::ConnectionFailed:
      return "Connection failed";
    case ErrorCode::TimedOut:
      return "Operation timed out";
    case ErrorCode::MissingBufferBinding:
      return "Missing buffer binding";
    case ErrorCode::CpuNotSupported:
      return "CPU is not supported";
    case ErrorCode::GpuNotSupported:
      return "GPU is not supported";
    case ErrorCode::OutOfGraphicsMemory:
      return "Out of graphics memory";
    case ErrorCode::VersionMismatch:
      return "Version mismatch";
    case ErrorCode::InternalError:
      return "Internal error";
    case ErrorCode::MemoryAllocationFailure:
      return "Memory allocation failure";
    case ErrorCode::UnrecoverableState:
      return "Unrecoverable state after previous error";
    case ErrorCode::Cancelled:
      return "Operation was cancelled";
    case ErrorCode::StringEncodingError:
      return "String encoding error";
    case ErrorCode::UnknownError:
      break;
  }
  return "Unknown error";
}

std::string formatMessage(const char* format, const detail::FormatArgument* args,
                          std::size_t count) {
  fmt::dynamic_format_arg_store<fmt::format_context> store;
  for (std::size_t i = 0; i < count; ++i) {
    std::visit([&](const auto& value) { store.push_back(value); }, args[i].value());
  }
  return fmt::vformat(format, store);
}

std::string_view orEmpty(const char* text) { return text ? std::string_view(text) : ""; }

}  // namespace

ErrorRecord::ErrorRecord(ErrorCode code, std::string_view text) : code_(code) {
  if (text.empty()) return;
  message_ = new char[text.size() + 1];
  std::memcpy(message_, text.data(), text.size());
  message_[text.size()] = '\0';
  length_ = text.size();
}

ErrorRecord::ErrorRecord(const ErrorRecord& other)
    : ErrorRecord(other.code_, std::string_view(other.message_, other.length_)) {}

ErrorRecord::ErrorRecord(ErrorRecord&& other) noexcept
    : code_(other.code_),
      message_(std::exchange(other.message_, nullptr)),
      length_(std::exchange(other.length_, 0)) {}

ErrorRecord& ErrorRecord::operator=(const ErrorRecord& other) { return *this = ErrorRecord(other); }

ErrorRecord& ErrorRecord::operator=(ErrorRecord&& other) noexcept {
  ErrorRecord taken(std::move(other));
  code_ = taken.code_;
  std::swap(message_, taken.message_);
  std::swap(length_, taken.length_);
  return *this;
}

ErrorRecord::~ErrorRecord() { delete[] message_; }

const char* ErrorRecord::text() const noexcept { return length_ ? message_ : codeText(code_); }

Exception::Exception(ErrorCode code, const char* text) : record_(code, orEmpty(text)) {}
Exception::Exception(ErrorCode code, std::string_view text) : record_(code, text) {}
Exception::Exception(ErrorCode code, const char* format, const detail::FormatArgument* args,
                     std::size_t count)
    : record_(code, formatMessage(format, args, count)) {}
Exception::Exception(ErrorRecord&& record) noexcept : record_(std::move(record)) {}
Exception::Exception(const Exception& other) = default;
Exception::Exception(Exception&& other) noexcept = default;
Exception& Exception::operator=(const Exception& other) = default;
Exception& Exception::operator=(Exception&& other) noexcept = default;
Exception::~Exception() = default;

const char* Exception::what() const noexcept { return record_.text(); }

}  // namespace vrnt
