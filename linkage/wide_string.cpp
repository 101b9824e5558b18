#include <string>

// Since GCC 13 libstdc++'s headers leave this one member to the library, which has it in one object with all
// others: 19 KB of the program.
#if _GLIBCXX_RELEASE >= 13
template void std::wstring::_M_replace_cold(wchar_t*, size_type, const wchar_t*, const size_type,
                                            const size_type);
#endif
