#pragma once

#include <windows.h>

#include <utility>

namespace ryn {

/// Owns one Windows resource and closes it on destruction; move-only. Closing keeps the calling
/// thread's last-error value, so an error can be reported after the resource is gone.
/// `Policy` names the value type, the value that means "none", and how to close.
template <typename Policy>
class UniqueResource {
 public:
  using Value = typename Policy::Value;

  UniqueResource() = default;
  explicit UniqueResource(Value value) : value_(value) {}
  UniqueResource(UniqueResource&& other) noexcept : value_(other.release()) {}
  UniqueResource& operator=(UniqueResource&& other) noexcept {
    if (this != &other) reset(other.release());
    return *this;
  }
  UniqueResource(const UniqueResource&) = delete;
  UniqueResource& operator=(const UniqueResource&) = delete;
  ~UniqueResource() { reset(); }

  Value get() const { return value_; }
  explicit operator bool() const { return value_ != Policy::none(); }

  /// Gives the resource up without closing it.
  Value release() { return std::exchange(value_, Policy::none()); }

  /// Closes what is held and takes `value` over.
  void reset(Value value = Policy::none()) {
    const Value old = std::exchange(value_, value);
    if (old == Policy::none()) return;
    const DWORD lastError = GetLastError();
    Policy::close(old);
    SetLastError(lastError);
  }

  /// For functions that return the resource through a pointer; closes what is held first.
  Value* receive() {
    reset();
    return &value_;
  }

 private:
  Value value_ = Policy::none();
};

/// Processes, threads, events, tokens, mappings: calls that answer failure with null.
struct KernelHandlePolicy {
  using Value = HANDLE;
  static Value none() { return nullptr; }
  static void close(Value value) { CloseHandle(value); }
};

/// CreateFileW and relatives: calls that answer failure with INVALID_HANDLE_VALUE.
struct FileHandlePolicy {
  using Value = HANDLE;
  static Value none() { return INVALID_HANDLE_VALUE; }
  static void close(Value value) { CloseHandle(value); }
};

struct FindHandlePolicy {
  using Value = HANDLE;
  static Value none() { return INVALID_HANDLE_VALUE; }
  static void close(Value value) { FindClose(value); }
};

struct ModulePolicy {
  using Value = HMODULE;
  static Value none() { return nullptr; }
  static void close(Value value) { FreeLibrary(value); }
};

struct RegistryHandlePolicy {
  using Value = HKEY;
  static Value none() { return nullptr; }
  static void close(Value value) { RegCloseKey(value); }
};

struct MappedViewPolicy {
  using Value = void*;
  static Value none() { return nullptr; }
  static void close(Value value) { UnmapViewOfFile(value); }
};

/// Memory that a system call allocated with LocalAlloc.
struct LocalMemoryPolicy {
  using Value = void*;
  static Value none() { return nullptr; }
  static void close(Value value) { LocalFree(value); }
};

using UniqueHandle = UniqueResource<KernelHandlePolicy>;
using UniqueFile = UniqueResource<FileHandlePolicy>;
using UniqueFind = UniqueResource<FindHandlePolicy>;
using UniqueModule = UniqueResource<ModulePolicy>;
using UniqueHkey = UniqueResource<RegistryHandlePolicy>;
using UniqueView = UniqueResource<MappedViewPolicy>;
using UniqueLocalMemory = UniqueResource<LocalMemoryPolicy>;

}  // namespace ryn
