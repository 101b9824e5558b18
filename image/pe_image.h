#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "text/little_endian.h"

namespace ryn {

// Source of the layout: "PE Format" in Microsoft's documentation of Win32.

/// Entries of the data directory that we know.
inline constexpr unsigned kResourceDirectory = 2;
inline constexpr unsigned kSecurityDirectory = 4;
inline constexpr unsigned kRelocationDirectory = 5;
inline constexpr unsigned kDebugDirectory = 6;

/// All offsets are in bytes from the start of the file, all addresses from where the image is loaded.
struct Section {
  std::string name;
  uint32_t address = 0;
  /// In memory; what the file has beyond it is padding.
  uint32_t size = 0;
  uint32_t fileOffset = 0;
  uint32_t fileSize = 0;
  uint32_t characteristics = 0;
  /// Of the section's own header.
  size_t headerOffset = 0;

  uint64_t end() const { return uint64_t{address} + size; }
  uint64_t fileEnd() const { return uint64_t{fileOffset} + fileSize; }
};

struct DataDirectory {
  uint32_t address = 0;
  uint32_t size = 0;
};

/// A Windows program (PE32 or PE32+) in memory, with its headers checked against the file. What is malformed
/// is an ImageError.
class PeImage {
 public:
  explicit PeImage(Bytes bytes);

  const Bytes& bytes() const { return bytes_; }
  bool is64Bit() const { return is64Bit_; }
  /// IMAGE_FILE_MACHINE_...
  uint16_t machine() const;
  /// In ascending order of their addresses, which do not overlap.
  const std::vector<Section>& sections() const { return sections_; }
  uint32_t fileAlignment() const { return fileAlignment_; }
  uint32_t sectionAlignment() const { return sectionAlignment_; }
  /// All zero for one that the image does not have.
  DataDirectory directory(unsigned index) const;
  unsigned directoryCount() const { return directoryCount_; }
  /// Whether it has an Authenticode signature, which any change makes invalid.
  bool isSigned() const;

  /// `size` bytes from an address, which must be in the file.
  ByteView data(uint32_t address, uint32_t size) const;

  /// Where the headers begin: "PE\0\0", the file header, the optional header.
  size_t fileHeader() const { return fileHeader_; }
  size_t optionalHeader() const { return fileHeader_ + 20; }
  size_t directoryOffset(unsigned index) const { return directories_ + size_t{8} * index; }

 private:
  void readSections();

  Bytes bytes_;
  size_t fileHeader_ = 0;
  size_t directories_ = 0;
  unsigned directoryCount_ = 0;
  bool is64Bit_ = false;
  uint32_t fileAlignment_ = 0;
  uint32_t sectionAlignment_ = 0;
  std::vector<Section> sections_;
};

/// Writes the check sum of a program into its header, as the linker's /RELEASE and the loader of drivers
/// count it.
void updateCheckSum(Bytes& bytes, size_t optionalHeader);

}  // namespace ryn
