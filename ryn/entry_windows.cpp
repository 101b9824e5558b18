#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cstdio>

#include "platform/dll_search.h"
#include "ryn/program.h"
#include "text/text.h"

namespace {

/// While it lives, what the program writes in UTF-8 is read as such by its console, which outlives it.
class Utf8Console {
 public:
  Utf8Console() : before_(GetConsoleOutputCP()) { SetConsoleOutputCP(CP_UTF8); }
  Utf8Console(const Utf8Console&) = delete;
  Utf8Console& operator=(const Utf8Console&) = delete;
  ~Utf8Console() { SetConsoleOutputCP(before_); }

 private:
  UINT before_;
};

// The same bytes as on other systems, and no character in two pieces, which a console shows as two.
void writeWhole(FILE* stream) {
  constexpr size_t kBuffer = 1 << 16;
  _setmode(_fileno(stream), _O_BINARY);
  setvbuf(stream, nullptr, _IOFBF, kBuffer);
}

// It is put beside applications and started there, from a folder of downloads at worst. Before other
// initialisers: that of GCC's stack protector loads a provider of random numbers.
__attribute__((constructor(101))) void narrowFirst() {
  ryn::narrowDllSearch();
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  const Utf8Console console;
  writeWhole(stdout);
  writeWhole(stderr);
  std::vector<std::string> arguments;
  for (int i = 0; i < argc; ++i) arguments.push_back(ryn::toUtf8(argv[i]));
  const int code = ryn::runProgram(arguments);
  // Before the console's code page goes back.
  fflush(stdout);
  fflush(stderr);
  return code;
}
