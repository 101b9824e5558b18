#pragma once

#include <windows.h>

namespace ryn {

/// While it lives, Windows does not ask the calling thread's user to insert a medium into a drive that a path
/// names: the call that used the path fails at once.
class QuietDrives {
 public:
  QuietDrives() { SetThreadErrorMode(SEM_FAILCRITICALERRORS, &old_); }
  QuietDrives(const QuietDrives&) = delete;
  QuietDrives& operator=(const QuietDrives&) = delete;
  ~QuietDrives() { SetThreadErrorMode(old_, nullptr); }

 private:
  DWORD old_ = 0;
};

}  // namespace ryn
