#pragma once

#include <string>

#include "platform/unique_handle.h"

namespace ryn {

/// Keeps two starts of one application from fetching its VM at the same time. Ends with its process, however
/// that ends.
class FetchLock {
 public:
  /// For the application of the launcher in `launcherFolder`; takes nothing yet.
  explicit FetchLock(const std::wstring& launcherFolder);
  FetchLock(const FetchLock&) = delete;
  FetchLock& operator=(const FetchLock&) = delete;
  ~FetchLock() { release(); }

  /// False when another start has it. True also where files cannot be locked: there nothing is guarded.
  [[nodiscard]] bool tryTake();

  /// Waits until whoever has it gives it up or ends.
  void take();

  void release();

 private:
  bool lock(DWORD flags);

  UniqueFile file_;
  bool held_ = false;
};

}  // namespace ryn
