#include <windows.h>

// The stack protector's two symbols. GCC's own library opens a cryptographic provider to draw the guard
// value, which takes as long as everything else that a launch does; Windows gives random bytes for the
// asking. The linker leaves that library out because both symbols are defined here.

// RtlGenRandom is exported under this name only.
extern "C" BOOLEAN NTAPI SystemFunction036(PVOID buffer, ULONG sizeBytes);

// NOLINTBEGIN(bugprone-reserved-identifier): the names are the compiler's
extern "C" {

extern void* __stack_chk_guard;
void* __stack_chk_guard = nullptr;

[[noreturn]] void __stack_chk_fail();
void __stack_chk_fail() {
  // Nothing may run on a stack that has been written over.
  TerminateProcess(GetCurrentProcess(), static_cast<UINT>(STATUS_STACK_BUFFER_OVERRUN));
  __builtin_unreachable();
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)

namespace {

// Before any other initialiser, so that no protected function sees two values.
__attribute__((constructor(101), no_stack_protector)) void drawStackGuard() {
  SystemFunction036(&__stack_chk_guard, sizeof(__stack_chk_guard));
  // A zero byte ends the strings that would be copied over it.
  *reinterpret_cast<unsigned char*>(&__stack_chk_guard) = 0;
}

}  // namespace
