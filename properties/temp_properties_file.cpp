#include "properties/temp_properties_file.h"

#include "platform/files.h"
#include "platform/text.h"
#include "properties/keys.h"
#include "properties/property_file.h"

namespace ryn {

TempPropertiesFile& TempPropertiesFile::instance() {
  static TempPropertiesFile file;
  return file;
}

TempPropertiesFile::TempPropertiesFile() : path_(createTemporaryFile()) {}

void TempPropertiesFile::append(std::wstring_view lines) const {
  const CStream stream = openForAppending(path_);
  if (!stream) return;
  const std::string bytes = toAnsi(lines);
  std::fwrite(bytes.data(), 1, bytes.size(), stream.get());
}

void TempPropertiesFile::appendCurrentVm(std::wstring_view executablePath) const {
  append(concat({keys::kCurrentVm, L"=", escapeProperty(executablePath), L"\n"}));
}

}  // namespace ryn
