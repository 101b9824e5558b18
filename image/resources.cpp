#include "image/resources.h"

#include <algorithm>
#include <tuple>
#include <vector>

#include "image/image_error.h"
#include "text/text.h"

namespace ryn {
namespace {

constexpr uint32_t kSubdirectory = 0x80000000;
constexpr size_t kTableSize = 16;
constexpr size_t kEntrySize = 8;
constexpr size_t kLeafSize = 16;
constexpr size_t kDataAlignment = 8;
// Far more than any program has; a directory whose tables share their parts would otherwise multiply.
constexpr size_t kMostEntries = 65536;

constexpr uint32_t kDiscardable = 0x02000000;
constexpr uint32_t kCodeOrExecutable = 0x20000020;

constexpr char kDamagedResources[] = "its resource directory is damaged";

/// Reads one directory, whose offsets count from the start of `bytes_`.
class DirectoryReader {
 public:
  DirectoryReader(const PeImage& image, ByteView bytes) : image_(image), bytes_(bytes) {}

  Resources read() {
    for (const auto& [type, typeTable] : table(kSubdirectory)) {
      for (const auto& [name, nameTable] : table(typeTable)) {
        for (const auto& [language, leaf] : table(nameTable)) {
          require(!language.isText() && (leaf & kSubdirectory) == 0, kDamagedResources);
          const bool isNew = resources_.try_emplace({type, name, language.number()}, resource(leaf)).second;
          require(isNew, "it has two resources of one type, name and language");
        }
      }
    }
    return std::move(resources_);
  }

 private:
  using Entry = std::pair<ResourceId, uint32_t>;

  void check(size_t offset, size_t size) const {
    require(offset <= bytes_.size() && size <= bytes_.size() - offset, kDamagedResources);
  }

  std::vector<Entry> table(uint32_t reference) {
    require((reference & kSubdirectory) != 0, kDamagedResources);
    const size_t offset = reference & ~kSubdirectory;
    check(offset, kTableSize);
    const size_t count = size_t{readU16(bytes_, offset + 12)} + readU16(bytes_, offset + 14);
    check(offset + kTableSize, count * kEntrySize);
    entries_ += count;
    require(entries_ <= kMostEntries, kDamagedResources);
    std::vector<Entry> entries;
    entries.reserve(count);
    for (size_t i = 0; i < count; ++i) {
      const size_t at = offset + kTableSize + i * kEntrySize;
      entries.emplace_back(id(readU32(bytes_, at)), readU32(bytes_, at + 4));
    }
    return entries;
  }

  ResourceId id(uint32_t value) {
    if ((value & kSubdirectory) == 0) {
      require(value <= UINT16_MAX, kDamagedResources);
      return static_cast<uint16_t>(value);
    }
    const size_t offset = value & ~kSubdirectory;
    check(offset, 2);
    const size_t length = readU16(bytes_, offset);
    check(offset + 2, 2 * length);
    charge(2 * length);
    require(length != 0, kDamagedResources);
    std::wstring text;
    for (size_t i = 0; i < length; ++i) text.push_back(readU16(bytes_, offset + 2 + 2 * i));
    return text;
  }

  Resource resource(uint32_t leaf) {
    check(leaf, kLeafSize);
    const uint32_t size = readU32(bytes_, leaf + 4);
    charge(size);
    const ByteView data = size == 0 ? ByteView() : image_.data(readU32(bytes_, leaf), size);
    return {Bytes(data.begin(), data.end()), readU32(bytes_, leaf + 8)};
  }

  /// What entries have in common would be multiplied, too.
  void charge(size_t size) {
    size_ += size;
    require(size_ <= image_.bytes().size(), kDamagedResources);
  }

  const PeImage& image_;
  ByteView bytes_;
  Resources resources_;
  size_t entries_ = 0;
  size_t size_ = 0;
};

/// The tables of a directory from the root down, then the leaves, the texts, and the data.
class DirectoryWriter {
 public:
  explicit DirectoryWriter(const Resources& resources) {
    for (const auto& [key, resource] : resources) {
      if (types_.empty() || !(types_.back().id == key.type)) types_.push_back({key.type, {}});
      auto& names = types_.back().names;
      if (names.empty() || !(names.back().id == key.name)) names.push_back({key.name, {}});
      names.back().languages.emplace_back(key.language, &resource);
    }
  }

  Bytes write(uint32_t address) {
    size_t tables = kTableSize + kEntrySize * types_.size();
    size_t leaves = 0;
    for (const Type& type : types_) {
      tables += kTableSize + kEntrySize * type.names.size();
      for (const Name& name : type.names) {
        tables += kTableSize + kEntrySize * name.languages.size();
        leaves += name.languages.size();
      }
    }
    nextTable_ = kTableSize + kEntrySize * types_.size();
    nextLeaf_ = tables;
    textStart_ = tables + kLeafSize * leaves;
    for (const Type& type : types_) {
      addText(type.id);
      for (const Name& name : type.names) addText(name.id);
    }
    size_t dataAt = textStart_ + texts_.size();

    // First the types, then all their names, then all languages: each level stands together.
    startTable(types_);
    for (const Type& type : types_) {
      addEntry(type.id, subtable(type.names.size()));
    }
    for (const Type& type : types_) {
      startTable(type.names);
      for (const Name& name : type.names) addEntry(name.id, subtable(name.languages.size()));
    }
    Bytes leafBytes;
    Bytes data;
    for (const Type& type : types_) {
      for (const Name& name : type.names) {
        appendTable(0, name.languages.size());
        for (const auto& [language, resource] : name.languages) {
          appendU32(bytes_, language);
          appendU32(bytes_, static_cast<uint32_t>(nextLeaf_));
          nextLeaf_ += kLeafSize;
          const size_t padding = (kDataAlignment - (dataAt + data.size()) % kDataAlignment) % kDataAlignment;
          data.resize(data.size() + padding);
          appendU32(leafBytes, static_cast<uint32_t>(address + dataAt + data.size()));
          appendU32(leafBytes, static_cast<uint32_t>(resource->data.size()));
          appendU32(leafBytes, resource->codePage);
          appendU32(leafBytes, 0);
          append(data, resource->data);
        }
      }
    }
    append(bytes_, leafBytes);
    append(bytes_, texts_);
    append(bytes_, data);
    require(bytes_.size() < kSubdirectory, "its resources become too large");
    return std::move(bytes_);
  }

 private:
  struct Name {
    ResourceId id;
    std::vector<std::pair<uint16_t, const Resource*>> languages;
  };
  struct Type {
    ResourceId id;
    std::vector<Name> names;
  };

  void addText(const ResourceId& id) {
    if (!id.isText() || !textOffsets_.try_emplace(id.text(), textStart_ + texts_.size()).second) return;
    appendU16(texts_, static_cast<uint16_t>(id.text().size()));
    for (const wchar_t unit : id.text()) appendU16(texts_, static_cast<uint16_t>(unit));
  }

  void appendTable(size_t texts, size_t numbers) {
    require(texts <= UINT16_MAX && numbers <= UINT16_MAX, "it gets too many resources");
    bytes_.resize(bytes_.size() + 12);
    appendU16(bytes_, static_cast<uint16_t>(texts));
    appendU16(bytes_, static_cast<uint16_t>(numbers));
  }

  template <typename Children>
  void startTable(const Children& children) {
    const auto texts = static_cast<size_t>(
        std::count_if(children.begin(), children.end(), [](const auto& child) { return child.id.isText(); }));
    appendTable(texts, children.size() - texts);
  }

  void addEntry(const ResourceId& id, uint32_t child) {
    appendU32(bytes_, id.isText() ? kSubdirectory | static_cast<uint32_t>(textOffsets_.at(id.text()))
                                  : uint32_t{id.number()});
    appendU32(bytes_, child);
  }

  uint32_t subtable(size_t entries) {
    const size_t offset = nextTable_;
    nextTable_ += kTableSize + kEntrySize * entries;
    return kSubdirectory | static_cast<uint32_t>(offset);
  }

  std::vector<Type> types_;
  Bytes bytes_;
  Bytes texts_;
  std::map<std::wstring, size_t> textOffsets_;
  size_t nextTable_ = 0;
  size_t nextLeaf_ = 0;
  size_t textStart_ = 0;
};

uint64_t alignUp(uint64_t value, uint32_t alignment) {
  return (value + alignment - 1) / alignment * alignment;
}

uint32_t narrow(uint64_t value) {
  require(value <= UINT32_MAX, "it becomes too large");
  return static_cast<uint32_t>(value);
}

const Section& resourceSection(const PeImage& image) {
  static constexpr char kShared[] = "its resources are not in a section of their own";
  const DataDirectory directory = image.directory(kResourceDirectory);
  require(directory.address != 0, "it has no resources");
  const auto& sections = image.sections();
  const auto found = std::find_if(sections.begin(), sections.end(), [&](const Section& section) {
    return section.address == directory.address && section.fileSize != 0;
  });
  require(found != sections.end(), kShared);
  for (unsigned i = 0; i < image.directoryCount(); ++i) {
    const uint32_t address = image.directory(i).address;
    require(i == kResourceDirectory || address < found->address || address >= found->end(), kShared);
  }
  for (const Section& other : sections) {
    require(&other == &*found || other.fileSize == 0 || other.fileEnd() <= found->fileOffset ||
                other.fileOffset >= found->fileEnd(),
            kShared);
  }
  return *found;
}

/// Where the bytes of a section end that go with it. Linkers leave the padding in front of the next section
/// out of the size of .rsrc; behind the last one there is no padding, but what somebody has appended.
uint64_t paddedFileEnd(const PeImage& image, const Section& section) {
  const bool isLast = std::none_of(
      image.sections().begin(), image.sections().end(),
      [&](const Section& other) { return other.fileSize != 0 && other.fileOffset > section.fileOffset; });
  return isLast ? section.fileEnd() : alignUp(section.fileEnd(), image.fileAlignment());
}

/// Whether whatever is behind `section` in memory may be at other addresses: it is thrown away when the
/// program runs, and only the header knows where the relocations are.
void requireMovable(const PeImage& image, const Section& section) {
  static constexpr char kFixed[] = "the program refers to what is behind its resources, so these cannot grow";
  for (const Section& other : image.sections()) {
    require(other.address <= section.address || ((other.characteristics & kDiscardable) != 0 &&
                                                 (other.characteristics & kCodeOrExecutable) == 0),
            kFixed);
  }
  for (unsigned i = 0; i < image.directoryCount(); ++i) {
    require(image.directory(i).address < section.end() || i == kRelocationDirectory, kFixed);
  }
}

/// Debugging data say where they are, in memory and in the file.
void moveDebugData(const PeImage& image, const Section& section, uint64_t fileEnd, uint32_t addressShift,
                   uint32_t fileShift, Bytes& bytes) {
  constexpr uint32_t entrySize = 28;
  const DataDirectory directory = image.directory(kDebugDirectory);
  if (directory.address == 0 || directory.size < entrySize) return;
  const ByteView entries = image.data(directory.address, directory.size);
  auto start = static_cast<size_t>(entries.data() - image.bytes().data());
  if (start >= fileEnd) start = static_cast<uint32_t>(start) + fileShift;
  for (size_t at = 0; at + entrySize <= entries.size(); at += entrySize) {
    const uint32_t address = readU32(entries, at + 20);
    const uint32_t offset = readU32(entries, at + 24);
    if (address >= section.end()) writeU32(bytes, start + at + 20, address + addressShift);
    if (offset >= fileEnd) writeU32(bytes, start + at + 24, offset + fileShift);
  }
}

}  // namespace

ResourceId::ResourceId(std::wstring text) : text_(std::move(text)), capitals_(upperCase(text_)) {
  require(!text_.empty() && text_.size() <= UINT16_MAX, "the name of a resource is empty or too long");
}

bool ResourceId::operator<(const ResourceId& other) const {
  if (isText() != other.isText()) return isText();
  return isText() ? capitals_ < other.capitals_ : number_ < other.number_;
}

bool ResourceId::operator==(const ResourceId& other) const {
  return number_ == other.number_ && capitals_ == other.capitals_;
}

bool ResourceKey::operator<(const ResourceKey& other) const {
  return std::tie(type, name, language) < std::tie(other.type, other.name, other.language);
}

Resources readResources(const PeImage& image) {
  const DataDirectory directory = image.directory(kResourceDirectory);
  if (directory.address == 0) return {};
  return DirectoryReader(image, image.data(directory.address, directory.size)).read();
}

Bytes withResources(const PeImage& image, const Resources& resources) {
  require(!image.isSigned(),
          "it is signed, and a change would make the signature invalid: take an unsigned one");
  const Section& section = resourceSection(image);
  Bytes content = DirectoryWriter(resources).write(section.address);
  const uint32_t size = narrow(content.size());
  padTo(content, image.fileAlignment());

  const Bytes& old = image.bytes();
  const uint64_t fileEnd = paddedFileEnd(image, section);
  const auto begin = old.begin();
  Bytes bytes(begin, begin + section.fileOffset);
  append(bytes, content);
  bytes.insert(bytes.end(), begin + static_cast<std::ptrdiff_t>(fileEnd), old.end());

  // Modulo 2^32, so that they go both ways.
  const uint32_t fileShift = narrow(content.size()) - narrow(fileEnd - section.fileOffset);
  const uint64_t oldEnd = alignUp(section.end(), image.sectionAlignment());
  const uint64_t newEnd = alignUp(uint64_t{section.address} + size, image.sectionAlignment());
  const uint32_t addressShift = narrow(newEnd) - narrow(oldEnd);
  if (addressShift != 0) requireMovable(image, section);

  for (const Section& other : image.sections()) {
    if (other.fileSize != 0 && other.fileOffset >= fileEnd) {
      writeU32(bytes, other.headerOffset + 20, other.fileOffset + fileShift);
    }
    if (other.address > section.address) {
      narrow(other.end() + (newEnd > oldEnd ? newEnd - oldEnd : 0));
      writeU32(bytes, other.headerOffset + 12, other.address + addressShift);
    }
  }
  writeU32(bytes, section.headerOffset + 8, size);
  writeU32(bytes, section.headerOffset + 16, narrow(content.size()));
  writeU32(bytes, image.directoryOffset(kResourceDirectory) + 4, size);
  const DataDirectory relocations = image.directory(kRelocationDirectory);
  if (relocations.address > section.address) {
    writeU32(bytes, image.directoryOffset(kRelocationDirectory), relocations.address + addressShift);
  }

  const auto shiftField = [&](size_t offset, uint32_t shift) {
    writeU32(bytes, offset, readU32(bytes, offset) + shift);
  };
  shiftField(image.optionalHeader() + 8, fileShift);      // SizeOfInitializedData
  shiftField(image.optionalHeader() + 56, addressShift);  // SizeOfImage
  const size_t symbolTable = image.fileHeader() + 8;
  if (readU32(bytes, symbolTable) >= fileEnd) shiftField(symbolTable, fileShift);
  moveDebugData(image, section, fileEnd, addressShift, fileShift, bytes);
  updateCheckSum(bytes, image.optionalHeader());
  return bytes;
}

std::optional<uint16_t> firstLanguage(const Resources& resources, const ResourceId& type,
                                      const ResourceId& name) {
  const auto found = resources.lower_bound({type, name, 0});
  if (found == resources.end() || !(found->first.type == type) || !(found->first.name == name)) return {};
  return found->first.language;
}

void replaceInAllLanguages(Resources& resources, const ResourceId& type, const ResourceId& name, Bytes data) {
  const auto first = resources.lower_bound({type, name, 0});
  const auto last = resources.upper_bound({type, name, UINT16_MAX});
  if (first == last) {
    resources[{type, name, 0}].data = std::move(data);
    return;
  }
  first->second.data = std::move(data);
  resources.erase(std::next(first), last);
}

}  // namespace ryn
