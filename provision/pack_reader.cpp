#include "provision/pack_reader.h"

#include <unzip.h>
#include <zlib.h>

#include <algorithm>
#include <string>

namespace ryn {
namespace {

constexpr unsigned kCopyBufferSize = 16384;
// The rules of names cut at 260 characters, and a character takes at most three bytes.
constexpr size_t kMaxStoredName = 3 * size_t{260};
constexpr unsigned kEncryptedFlag = 1;

}  // namespace

void PackReader::Close::operator()(void* reader) const {
  unzClose(reader);
}

bool PackReader::open(zlib_filefunc64_def_s& functions, const void* path) {
  reader_.reset(unzOpen2_64(path, &functions));
  return reader_ != nullptr;
}

int32_t PackReader::entryCount() const {
  unz_global_info64 info{};
  unzGetGlobalInfo64(reader_.get(), &info);
  return static_cast<int32_t>(std::min<uint64_t>(info.number_entry, INT32_MAX));
}

bool PackReader::moveTo(int32_t index) {
  int status = UNZ_OK;
  if (position_ > index) {
    status = unzGoToFirstFile(reader_.get());
    position_ = 0;
  }
  for (; status == UNZ_OK && position_ < index; ++position_) status = unzGoToNextFile(reader_.get());
  if (status != UNZ_OK) position_ = kNowhere;
  return status == UNZ_OK;
}

PackResult PackReader::getEntry(int32_t index, PackEntry& entry) {
  if (index == -1) {
    entry.index = entryCount();
    return PackResult::kOk;
  }
  if (index < 0 || index >= entryCount()) return PackResult::kBadIndex;
  if (cached_.index == index) {
    entry = cached_;
    return PackResult::kOk;
  }

  cached_.index = -1;
  openIndex_ = -1;
  if (!moveTo(index)) return PackResult::kBadIndex;
  char name[kMaxStoredName + 1] = {};
  unz_file_info64 info{};
  if (unzGetCurrentFileInfo64(reader_.get(), &info, name, sizeof(name) - 1, nullptr, 0, nullptr, 0) !=
      UNZ_OK) {
    return PackResult::kCorruptHeader;
  }
  // The reader would hand bzip2 data through as it is.
  if (info.compression_method != 0 && info.compression_method != Z_DEFLATED)
    return PackResult::kCorruptHeader;
  // Opening compares the entry's own header with the directory. All three times are only in the former.
  if (unzOpenCurrentFile(reader_.get()) != UNZ_OK) return PackResult::kCorruptHeader;
  openIndex_ = index;
  std::string extraField(static_cast<size_t>(unzGetLocalExtrafield(reader_.get(), nullptr, 0)), '\0');
  if (unzGetLocalExtrafield(reader_.get(), extraField.data(), static_cast<unsigned>(extraField.size())) < 0) {
    return PackResult::kExtraFieldUnreadable;
  }

  cached_.index = index;
  cached_.name = entryName(name);
  cached_.attributes =
      attributesOf(static_cast<unsigned>(info.version), static_cast<uint32_t>(info.external_fa));
  cached_.times = timesOf(dosTime_(static_cast<uint32_t>(info.dosDate)), extraField);
  cachedIsEncrypted_ = (info.flag & kEncryptedFlag) != 0;
  entry = cached_;
  return PackResult::kOk;
}

PackResult PackReader::openData() {
  if (cachedIsEncrypted_) return PackResult::kEncrypted;
  if (openIndex_ != cached_.index && unzOpenCurrentFile(reader_.get()) != UNZ_OK) {
    return PackResult::kCorruptHeader;
  }
  openIndex_ = cached_.index;
  if (!copyBuffer_) copyBuffer_ = std::make_unique<char[]>(kCopyBufferSize);
  return PackResult::kOk;
}

PackResult PackReader::readData(std::string_view& piece) {
  piece = {};
  if (unzeof(reader_.get()) == 1) return PackResult::kOk;
  const int size = unzReadCurrentFile(reader_.get(), copyBuffer_.get(), kCopyBufferSize);
  if (size > 0) piece = std::string_view(copyBuffer_.get(), static_cast<size_t>(size));
  const bool ended = size < 0 || (size == 0 && unzeof(reader_.get()) != 1);
  return ended ? PackResult::kDataEnded : PackResult::kOk;
}

void PackReader::closeData() {
  unzCloseCurrentFile(reader_.get());
  openIndex_ = -1;
}

}  // namespace ryn
