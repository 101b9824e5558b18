#include <cstdlib>

// libstdc++'s own handler prints the type of an uncaught exception, and for that one line links the
// name demangler and with it 70 KB. A GUI program has nowhere to print it.
namespace __gnu_cxx {
void __verbose_terminate_handler();
void __verbose_terminate_handler() {
  std::abort();
}
}  // namespace __gnu_cxx
