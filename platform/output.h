#pragma once

#include <string_view>

namespace ryn {

/// Write `text`, whose lines end in "\n", to what is the process's standard output or error at the moment, so
/// that it follows a console that was opened later. A console gets the text in Unicode; a file or pipe gets
/// it in the ANSI code page with "\r\n". Without a standard handle the text goes nowhere.
void writeOutput(std::wstring_view text);
void writeError(std::wstring_view text);

/// writeError when standard error is a console, else nothing.
void writeErrorToConsole(std::wstring_view text);

}  // namespace ryn
