#pragma once

#include <exception>
#include <string>

namespace ryn {

/// Base of the launcher's exceptions: a wide message, and the same text as narrow `what()`.
/// Characters above 255 appear there as "\uXXXX", because the narrow text is shown again by
/// widening each byte.
class WideException : public std::exception {
 public:
  explicit WideException(std::wstring message);

  const char* what() const noexcept override { return narrow_.c_str(); }
  const std::wstring& message() const noexcept { return message_; }

 protected:
  /// `description` is what `what()` gives when it says more than the message.
  WideException(std::wstring message, const std::wstring& description);

 private:
  std::wstring message_;
  std::string narrow_;
};

/// Ends the launch; only the entry catches it and shows the message.
class TerminalError : public WideException {
 public:
  using WideException::WideException;
};

/// No usable VM: a case of its own, because it ends the process with an exit code of its own.
class NoValidVmError : public TerminalError {
 public:
  using TerminalError::TerminalError;
};

/// A file that could not be used. `what()` names the file behind the message.
class FileException : public WideException {
 public:
  FileException(const std::wstring& message, std::wstring fileName);

  const std::wstring& fileName() const noexcept { return fileName_; }

 private:
  std::wstring fileName_;
};

}  // namespace ryn
