#pragma once

#include <string_view>

namespace ryn {

/// Write `text` to the process's standard output or error through the C streams, so that it follows a
/// console that was opened later. A console gets the text whole; a file or pipe gets it in the ANSI
/// code page, with "\n" as a line end of the stream's text mode. Without a stream the text goes
/// nowhere.
void writeOutput(std::wstring_view text);
void writeError(std::wstring_view text);

}  // namespace ryn
