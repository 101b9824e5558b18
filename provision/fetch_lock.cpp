#include "provision/fetch_lock.h"

#include "provision/application_layout.h"

namespace ryn {
namespace {

/// The byte that is locked, behind the end of any file of properties, so that nobody is kept from reading.
OVERLAPPED lockedByte() {
  OVERLAPPED place = {};
  place.OffsetHigh = 1;
  return place;
}

}  // namespace

// A byte of jvmspecs.properties, which every fetch has just read. Reading it is all that is needed, so that
// every user and a service in session 0 can take the lock, also where the application lies on another machine
// and by whatever path; Windows ends it with the process, waits for it without asking again and again, and
// nothing is left in the folder. A mutex that another session and another user can open needs an access list
// of its own, and its name would have to be derived from one of the folder's paths. A file opened without
// sharing cannot be waited for.
FetchLock::FetchLock(const std::wstring& launcherFolder)
    : file_(CreateFileW(findJvmspecs(launcherFolder).c_str(), GENERIC_READ,
                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING, 0,
                        nullptr)) {}

bool FetchLock::lock(DWORD flags) {
  OVERLAPPED place = lockedByte();
  held_ = file_ && LockFileEx(file_.get(), LOCKFILE_EXCLUSIVE_LOCK | flags, 0, 1, 0, &place) != FALSE;
  return held_;
}

bool FetchLock::tryTake() {
  return lock(LOCKFILE_FAIL_IMMEDIATELY) || !file_ || GetLastError() != ERROR_LOCK_VIOLATION;
}

void FetchLock::take() {
  lock(0);
}

void FetchLock::release() {
  if (!held_) return;
  // Closing the file would do, but not always at once.
  OVERLAPPED place = lockedByte();
  UnlockFileEx(file_.get(), 0, 1, 0, &place);
  held_ = false;
}

}  // namespace ryn
