#include <errno.h>
#include <pthread.h>
#include <windows.h>

#include <cstdlib>
#include <iterator>

// The few functions of winpthread that libstdc++ and libgcc call for themselves: around the memory of
// exceptions, around static variables of functions, and to find what belongs to a thread. winpthread keeps a
// table of threads, an exception handler and start-up code behind them, 30 KB of the program; Windows has the
// same as locks that need no set-up.
//
// When code begins to use another function of it (std::thread, a recursive mutex), the linker takes
// winpthread's file with all of them and complains of definitions that occur twice: define that one here,
// too.
namespace {

// Static initialisers of winpthread are -1 for a plain object, -2 and -3 for mutexes of other types; an
// unused lock of Windows is 0. No lock in use looks like them, since its pointer is aligned and its counters
// stay far below. The libraries declare the mutex around static variables as one that can be locked twice,
// and never do so.
constexpr intptr_t kPlain = -1;
constexpr intptr_t kOtherType = -3;

template <typename Lock>
Lock* lockIn(intptr_t* object) {
  static_assert(sizeof(Lock) == sizeof(*object));
  intptr_t value = __atomic_load_n(object, __ATOMIC_ACQUIRE);
  if (value <= kPlain && value >= kOtherType) {
    __atomic_compare_exchange_n(object, &value, 0, false, __ATOMIC_ACQ_REL, __ATOMIC_RELAXED);
  }
  return reinterpret_cast<Lock*>(object);
}

/// What Windows calls when a thread ends. On 64-bit Windows there is one way to call a function, and it is
/// `destructor` itself.
inline PFLS_CALLBACK_FUNCTION callbackFor(PFLS_CALLBACK_FUNCTION destructor) {
  return destructor;
}

template <typename Destructor>
Destructor destructors[2];

template <typename Destructor, size_t index>
void CALLBACK callDestructor(void* value) {
  destructors<Destructor>[index](value);
}

template <typename Destructor>
PFLS_CALLBACK_FUNCTION callbackFor(Destructor destructor) {
  if (destructor == nullptr) return nullptr;
  static constexpr PFLS_CALLBACK_FUNCTION kCallers[] = {callDestructor<Destructor, 0>,
                                                        callDestructor<Destructor, 1>};
  static LONG used = 0;
  const auto index = static_cast<size_t>(InterlockedIncrement(&used)) - 1;
  // The libraries have no more keys; a new one needs a caller of its own.
  if (index >= std::size(kCallers)) std::abort();
  destructors<Destructor>[index] = destructor;
  return kCallers[index];
}

}  // namespace

extern "C" {

int pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* /*attributes*/) {
  *mutex = kPlain;  // NOLINT(misc-non-copyable-objects): a number in this library, whose header says so.
  return 0;
}

int pthread_mutex_destroy(pthread_mutex_t* /*mutex*/) {
  return 0;
}

int pthread_mutex_lock(pthread_mutex_t* mutex) {
  AcquireSRWLockExclusive(lockIn<SRWLOCK>(mutex));
  return 0;
}

int pthread_mutex_unlock(pthread_mutex_t* mutex) {
  ReleaseSRWLockExclusive(lockIn<SRWLOCK>(mutex));
  return 0;
}

int pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex) {
  SleepConditionVariableSRW(lockIn<CONDITION_VARIABLE>(condition), lockIn<SRWLOCK>(mutex), INFINITE, 0);
  return 0;
}

int pthread_cond_broadcast(pthread_cond_t* condition) {
  WakeAllConditionVariable(lockIn<CONDITION_VARIABLE>(condition));
  return 0;
}

/// `function` must neither throw nor come back here: the libraries' own do not.
int pthread_once(pthread_once_t* once, void (*function)()) {
  static SRWLOCK lock = SRWLOCK_INIT;
  if (__atomic_load_n(once, __ATOMIC_ACQUIRE) != PTHREAD_ONCE_INIT) return 0;
  AcquireSRWLockExclusive(&lock);
  if (*once == PTHREAD_ONCE_INIT) {
    function();
    __atomic_store_n(once, PTHREAD_ONCE_INIT + 1, __ATOMIC_RELEASE);
  }
  ReleaseSRWLockExclusive(&lock);
  return 0;
}

int pthread_key_create(pthread_key_t* key, void (*destructor)(void*)) {
  // Unlike a slot from TlsAlloc it calls the destructor when a thread ends.
  const DWORD slot = FlsAlloc(callbackFor(destructor));
  if (slot == FLS_OUT_OF_INDEXES) return EAGAIN;
  *key = slot;
  return 0;
}

/// Leaves the last error alone: exceptions are thrown between a failed call and the question why it failed.
void* pthread_getspecific(pthread_key_t key) {
  const DWORD error = GetLastError();
  void* const value = FlsGetValue(key);
  SetLastError(error);
  return value;
}

int pthread_setspecific(pthread_key_t key, const void* value) {
  const DWORD error = GetLastError();
  const bool set = FlsSetValue(key, const_cast<void*>(value)) != 0;
  SetLastError(error);
  return set ? 0 : ENOMEM;
}

}  // extern "C"
