#include <exception>
#include <new>
#include <string>

// What the containers throw when they are asked for the impossible, in place of libstdc++'s own functions:
// those build std::length_error and its kin, which bring two implementations of std::string with them, a
// quarter of the program. Nobody tells these errors apart; the entry shows what() of any.
//
// When code begins to use another of these functions, the linker takes libstdc++'s file with all of them and
// complains of definitions that occur twice: define that one here, too.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl58-cpp): the names to replace are libstdc++'s
namespace {

class LibraryError final : public std::exception {
 public:
  /// `what` is a literal.
  explicit LibraryError(const char* what) : what_(what) {}
  const char* what() const noexcept override { return what_; }

 private:
  const char* what_;
};

}  // namespace

namespace std {

void __throw_bad_alloc() {
  throw bad_alloc();
}

void __throw_bad_array_new_length() {
  throw LibraryError("bad_array_new_length");
}

void __throw_bad_function_call() {
  throw LibraryError("bad_function_call");
}

void __throw_length_error(const char* what) {
  throw LibraryError(what);
}

void __throw_logic_error(const char* what) {
  throw LibraryError(what);
}

void __throw_out_of_range_fmt(const char* format, ...) {
  throw LibraryError(format);
}

}  // namespace std
// NOLINTEND(bugprone-reserved-identifier,cert-dcl58-cpp)
