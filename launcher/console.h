#pragma once

#include <string>

namespace ryn {

/// The Ctrl key is held down at this moment.
bool controlKeyIsDown();

/// The console of the process, opened at most once and kept to the end.
class Console {
 public:
  static Console& instance();

  /// True once `open` has been called.
  bool isAllocated() const { return allocated_; }

  /// Opens the console window and makes it the process's standard handles, which a child started later
  /// inherits. From then on Ctrl+C and Ctrl+Break there are left to that child. Failures are not reported:
  /// the launch goes on without visible output.
  void open(const std::wstring& title);

  /// Writes the prompt and waits for Enter in the console.
  void holdOpen() const;

 private:
  bool allocated_ = false;
};

}  // namespace ryn
