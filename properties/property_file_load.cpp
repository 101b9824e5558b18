#include "platform/errors.h"
#include "platform/files.h"
#include "properties/property_file.h"

namespace ryn {

void PropertyFile::load(const std::wstring& path) {
  const CStream stream = openForReading(path);
  if (!stream) throw FileException(L"could not open file for read", path);

  parse(readLatin1(stream.get()));
}

}  // namespace ryn
