#pragma once

#include <string>
#include <string_view>

// Paths of Windows as texts, whatever the system that looks at them.

namespace ryn {

/// Absolute as the property files mean it: the first character is "\" or the second is ":".
bool isAbsolutePath(std::wstring_view path);

/// A drive and its root, or a share: a path that means the same from every folder.
bool isFullPath(std::wstring_view path);

/// Without the "\" at its end, of which a folder's path may have some.
std::wstring withoutTrailingSeparators(std::wstring_view path);

/// The absolute form of a path that `baseFolder` (absolute) is the current folder for: "/" becomes "\", "."
/// and ".." segments and blanks and dots at the end go, as GetFullPathNameW does it, but without asking the
/// process for its current folders. Paths that begin with "\\?\" stay as they are; an empty path stays empty.
std::wstring resolvePath(std::wstring_view path, std::wstring_view baseFolder);

/// `folder` + "\" + `name`, without a second "\" when `folder` ends in one.
std::wstring joinPath(std::wstring_view folder, std::wstring_view name);

/// The text before the last "\"; "." when there is none. Only "\" separates.
std::wstring folderPart(std::wstring_view path);

/// The text after the last "\"; the whole path when there is none.
std::wstring fileName(std::wstring_view path);

/// `path` with the extension of its file name replaced by `extension` (with its dot); a file name
/// without an extension gets it appended.
std::wstring replaceExtension(std::wstring_view path, std::wstring_view extension);

}  // namespace ryn
