#include "ryn/zip_file.h"

#include <algorithm>

namespace ryn {
ZipFile::ZipFile(Bytes bytes) : bytes_(std::move(bytes)), file_{.bytes = bytes_} {
  zlib_filefunc64_def functions = memoryFunctions();
  reader_ = unzOpen2_64(&file_, &functions);
  if (reader_ == nullptr) return;
  for (int status = unzGoToFirstFile(reader_); status == UNZ_OK; status = unzGoToNextFile(reader_)) {
    unz_file_info64 info{};
    unz64_file_pos position{};
    if (unzGetCurrentFileInfo64(reader_, &info, nullptr, 0, nullptr, 0, nullptr, 0) != UNZ_OK) break;
    std::string name(info.size_filename, '\0');
    if (unzGetCurrentFileInfo64(reader_, &info, name.data(), static_cast<uLong>(name.size()), nullptr, 0,
                                nullptr, 0) != UNZ_OK ||
        unzGetFilePos64(reader_, &position) != UNZ_OK) {
      break;
    }
    entries_.push_back({std::move(name), static_cast<uint32_t>(info.crc)});
    positions_.emplace_back(position.pos_in_zip_directory, position.num_of_file);
  }
}

ZipFile::~ZipFile() {
  if (reader_ != nullptr) unzClose(reader_);
}

std::unique_ptr<ZipFile> ZipFile::open(Bytes bytes) {
  std::unique_ptr<ZipFile> file(new ZipFile(std::move(bytes)));
  if (file->reader_ == nullptr) file.reset();
  return file;
}

std::optional<Bytes> ZipFile::read(size_t index, size_t limit) const {
  static constexpr size_t kPiece = 65536;
  unz64_file_pos position{};
  position.pos_in_zip_directory = positions_[index].first;
  position.num_of_file = positions_[index].second;
  if (unzGoToFilePos64(reader_, &position) != UNZ_OK || unzOpenCurrentFile(reader_) != UNZ_OK) {
    return std::nullopt;
  }
  Bytes content;
  int count = 0;
  do {
    const size_t size = content.size();
    const size_t piece = std::min(kPiece, limit - size);
    content.resize(size + piece);
    count = unzReadCurrentFile(reader_, content.data() + size, static_cast<unsigned>(piece));
    content.resize(size + static_cast<size_t>(std::max(count, 0)));
  } while (count > 0 && content.size() < limit);
  const bool isWhole = count >= 0;
  unzCloseCurrentFile(reader_);
  if (!isWhole) return std::nullopt;
  return content;
}

std::optional<Bytes> ZipFile::read(const std::string& name, size_t limit) const {
  const auto found = std::find_if(entries_.begin(), entries_.end(),
                                  [&name](const Entry& entry) { return entry.name == name; });
  if (found == entries_.end()) return std::nullopt;
  return read(static_cast<size_t>(found - entries_.begin()), limit);
}

}  // namespace ryn
