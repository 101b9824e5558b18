#include "image/pe_image.h"

#include <algorithm>
#include <bit>

#include "image/image_error.h"

namespace ryn {
namespace {

constexpr size_t kFileHeaderSize = 20;
constexpr size_t kSectionHeaderSize = 40;
// The loader's own limit.
constexpr size_t kMostSections = 96;
constexpr unsigned kMostDirectories = 16;
constexpr size_t kCheckSumOffset = 64;

bool fits(const Bytes& bytes, uint64_t offset, uint64_t size) {
  return offset <= bytes.size() && size <= bytes.size() - offset;
}

}  // namespace

PeImage::PeImage(Bytes bytes) : bytes_(std::move(bytes)) {
  static constexpr char kNoProgram[] = "it is no Windows program";
  static constexpr char kBroken[] = "its headers are damaged";
  require(fits(bytes_, 0, 64) && readU16(bytes_, 0) == 0x5A4D, kNoProgram);
  const uint32_t signature = readU32(bytes_, 0x3C);
  require(fits(bytes_, signature, 4 + kFileHeaderSize + 2), kNoProgram);
  require(readU32(bytes_, signature) == 0x4550, kNoProgram);
  fileHeader_ = size_t{signature} + 4;

  const uint16_t magic = readU16(bytes_, optionalHeader());
  require(magic == 0x10B || magic == 0x20B, kNoProgram);
  is64Bit_ = magic == 0x20B;
  const size_t fixedSize = is64Bit_ ? 112 : 96;
  const size_t optionalSize = readU16(bytes_, fileHeader_ + 16);
  require(optionalSize >= fixedSize && fits(bytes_, optionalHeader(), optionalSize), kBroken);
  directories_ = optionalHeader() + fixedSize;
  directoryCount_ = std::min(readU32(bytes_, directories_ - 4), kMostDirectories);
  require(8 * size_t{directoryCount_} <= optionalSize - fixedSize, kBroken);

  sectionAlignment_ = readU32(bytes_, optionalHeader() + 32);
  fileAlignment_ = readU32(bytes_, optionalHeader() + 36);
  require(std::has_single_bit(fileAlignment_) && std::has_single_bit(sectionAlignment_) &&
              fileAlignment_ <= sectionAlignment_ && sectionAlignment_ <= 1U << 24,
          kBroken);
  readSections();
}

void PeImage::readSections() {
  const size_t count = readU16(bytes_, fileHeader_ + 2);
  const size_t table = optionalHeader() + readU16(bytes_, fileHeader_ + 16);
  require(count <= kMostSections && fits(bytes_, table, count * kSectionHeaderSize),
          "its section headers are damaged");
  uint64_t end = 0;
  for (size_t i = 0; i < count; ++i) {
    Section section;
    section.headerOffset = table + i * kSectionHeaderSize;
    const ByteView header = ByteView(bytes_).subspan(section.headerOffset, kSectionHeaderSize);
    const auto name = header.first(8);
    section.name.assign(name.begin(), std::find(name.begin(), name.end(), 0));
    section.size = readU32(header, 8);
    section.address = readU32(header, 12);
    section.fileSize = readU32(header, 16);
    section.fileOffset = readU32(header, 20);
    section.characteristics = readU32(header, 36);
    // As the loader takes it.
    if (section.size == 0) section.size = section.fileSize;
    if (section.fileSize == 0) section.fileOffset = 0;
    require(section.address >= end && section.address % sectionAlignment_ == 0 && section.end() <= UINT32_MAX,
            "its sections overlap");
    // What stands before the end of the headers would change with them.
    require(section.fileSize == 0 || (section.fileOffset % fileAlignment_ == 0 &&
                                      section.fileOffset >= table + count * kSectionHeaderSize &&
                                      fits(bytes_, section.fileOffset, section.fileSize)),
            "it ends within a section");
    end = section.end();
    sections_.push_back(std::move(section));
  }
}

uint16_t PeImage::machine() const {
  return readU16(bytes_, fileHeader_);
}

DataDirectory PeImage::directory(unsigned index) const {
  if (index >= directoryCount_) return {};
  const size_t at = directoryOffset(index);
  return {readU32(bytes_, at), readU32(bytes_, at + 4)};
}

bool PeImage::isSigned() const {
  const DataDirectory security = directory(kSecurityDirectory);
  return security.address != 0 || security.size != 0;
}

ByteView PeImage::data(uint32_t address, uint32_t size) const {
  for (const Section& section : sections_) {
    if (address < section.address || address >= section.end()) continue;
    const uint32_t start = address - section.address;
    const uint32_t available = std::min(section.size, section.fileSize);
    if (start > available || size > available - start) break;
    return ByteView(bytes_).subspan(size_t{section.fileOffset} + start, size);
  }
  throw ImageError("something in it lies outside its sections");
}

void updateCheckSum(Bytes& bytes, size_t optionalHeader) {
  const size_t field = optionalHeader + kCheckSumOffset;
  writeU32(bytes, field, 0);
  uint64_t sum = 0;
  for (size_t i = 0; i + 1 < bytes.size(); i += 2) sum += readU16(bytes, i);
  if (bytes.size() % 2 != 0) sum += bytes.back();
  // Carries are added again at the low end, which can be done at the end for all of them.
  while (sum > 0xFFFF) sum = (sum & 0xFFFF) + (sum >> 16);
  writeU32(bytes, field, static_cast<uint32_t>(sum + bytes.size()));
}

}  // namespace ryn
