#include <cstdlib>

// libstdc++'s own handler prints the type of an uncaught exception, and for that one line links the
// name demangler and with it 70 KB. A GUI program has nowhere to print it.
// NOLINTBEGIN(bugprone-reserved-identifier): the name to replace is libstdc++'s
namespace __gnu_cxx {
void __verbose_terminate_handler();
void __verbose_terminate_handler() {
  std::abort();
}
}  // namespace __gnu_cxx
// NOLINTEND(bugprone-reserved-identifier)
