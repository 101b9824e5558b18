#include "ryn/output.h"

#include <algorithm>
#include <fstream>
#include <system_error>

#include "text/text.h"

namespace ryn {
namespace fs = std::filesystem;

fs::path pathOf(const std::string& utf8) {
  return fs::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string textOf(const fs::path& path) {
  const std::u8string text = path.generic_u8string();
  return {text.begin(), text.end()};
}

std::vector<std::string> utf8Of(const std::vector<std::wstring>& texts) {
  std::vector<std::string> utf8(texts.size());
  std::ranges::transform(texts, utf8.begin(), toUtf8);
  return utf8;
}

Bytes readFile(const fs::path& path) {
  // A folder can be opened, and reads as an empty file.
  std::ifstream file(path, std::ios::binary);
  if (!file || !fs::is_regular_file(path)) throw CommandError(kUsage, "cannot read " + textOf(path));
  Bytes bytes(static_cast<size_t>(fs::file_size(path)));
  file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (!file) throw CommandError(kUsage, "cannot read " + textOf(path));
  return bytes;
}

void writeFile(const fs::path& path, ByteView bytes) {
  fs::path temporary = path;
  temporary += ".tmp";
  std::ofstream file(temporary, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  file.close();
  std::error_code error;
  if (file) fs::rename(temporary, path, error);
  if (!file || error) {
    std::error_code ignored;
    fs::remove(temporary, ignored);
    throw CommandError(kUsage, "cannot write " + textOf(path));
  }
}

std::vector<std::string> filesBelow(const fs::path& folder) {
  std::vector<std::string> names;
  try {
    const auto options = fs::directory_options::follow_directory_symlink;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder, options)) {
      const std::string name = textOf(entry.path().lexically_relative(folder));
      if (!entry.is_directory())
        names.push_back(name);
      else if (fs::is_empty(entry.path()))
        names.push_back(name + "/");
    }
  } catch (const fs::filesystem_error& error) {
    throw CommandError(kUsage, "cannot read the folder " + textOf(folder) + ": " + error.code().message());
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace ryn
