#include "packs/pack_writer.h"

#include <zlib.h>

#include <algorithm>
#include <climits>
#include <map>
#include <memory>

#include "text/text.h"

namespace ryn {
namespace {

/// Of PKWARE's "APPNOTE.TXT": made by version 2.0 on a FAT file system, names in UTF-8.
constexpr uint16_t kVersion = 20;
constexpr uint16_t kUtf8Names = 0x800;
/// 1 January 1980, the first that the format knows.
constexpr uint32_t kDate = 0x00210000;
constexpr uint32_t kFolderAttribute = 0x10;
constexpr uint32_t kArchiveAttribute = 0x20;
/// The launcher reads that many characters of a name.
constexpr size_t kLongestName = 260;

bool isFolder(std::string_view name) {
  return name.ends_with('/');
}

std::string foldCase(std::string text) {
  for (char& c : text) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return text;
}

/// Reserved in every folder, with any extension. Source: "Naming Files, Paths, and Namespaces" in
/// Microsoft's documentation.
bool isDevice(std::string_view part) {
  std::string stem = foldCase(std::string(part.substr(0, part.find('.'))));
  while (stem.ends_with(' ')) stem.pop_back();
  for (const std::string_view name : {"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"}) {
    if (stem == name) return true;
  }
  if (!stem.starts_with("COM") && !stem.starts_with("LPT")) return false;
  const std::string number = stem.substr(3);
  return (number.size() == 1 && number[0] >= '1' && number[0] <= '9') || number == "\xC2\xB9" ||
         number == "\xC2\xB2" || number == "\xC2\xB3";
}

/// Empty for none.
std::string partFault(std::string_view part) {
  if (part.empty() || part == "." || part == "..") return "is no name of a file below the runtime's folder";
  if (isDevice(part)) return "is the name of a device";
  if (part.ends_with('.') || part.ends_with(' ')) return "ends in a dot or a blank, which Windows drops";
  for (const char c : part) {
    if (static_cast<unsigned char>(c) < 0x20 ||
        std::string_view("<>:\"\\|?*").find(c) != std::string_view::npos) {
      return "has a character that Windows does not allow in names";
    }
  }
  return {};
}

/// 2 for bin/java.exe, 1 for bin/javaw.exe, 0 for all others.
int rank(std::string_view name) {
  const std::string folded = foldCase(std::string(name));
  for (const char* folder : {"BIN/", "JRE/BIN/"}) {
    if (folded == std::string(folder) + "JAVA.EXE") return 2;
    if (folded == std::string(folder) + "JAVAW.EXE") return 1;
  }
  return 0;
}

void check(bool holds, std::string_view name, const char* complaint) {
  if (!holds) throw PackError(std::string(name) + ": " + complaint);
}

class ZipWriter {
 public:
  enum class Method : uint16_t { kStored = 0, kDeflated = 8 };

  void add(const std::string& name, const Bytes& data, Method method) {
    check(data.size() <= INT32_MAX, name, "is larger than 2 GB");
    Bytes packed;
    if (method == Method::kDeflated) packed = deflated(data);
    // What does not get smaller is kept as it is.
    if (packed.empty() || packed.size() >= data.size()) method = Method::kStored;
    const Bytes& content = method == Method::kStored ? data : packed;

    Bytes common;
    appendU16(common, kVersion);
    appendU16(common, kUtf8Names);
    appendU16(common, static_cast<uint16_t>(method));
    appendU32(common, kDate);
    appendU32(common, static_cast<uint32_t>(crc32_z(crc32_z(0, nullptr, 0), data.data(), data.size())));
    appendU32(common, static_cast<uint32_t>(content.size()));
    appendU32(common, static_cast<uint32_t>(data.size()));
    appendU16(common, static_cast<uint16_t>(name.size()));
    appendU16(common, 0);  // extra field

    appendU32(directory_, 0x02014B50);
    appendU16(directory_, kVersion);
    append(directory_, common);
    directory_.resize(directory_.size() + 6);  // comment, disk, internal attributes
    appendU32(directory_, isFolder(name) ? kFolderAttribute : kArchiveAttribute);
    appendU32(directory_, static_cast<uint32_t>(bytes_.size()));
    append(directory_, {reinterpret_cast<const uint8_t*>(name.data()), name.size()});

    appendU32(bytes_, 0x04034B50);
    append(bytes_, common);
    append(bytes_, {reinterpret_cast<const uint8_t*>(name.data()), name.size()});
    append(bytes_, content);
    check(bytes_.size() <= INT32_MAX, name, "makes the pack larger than 2 GB");
    ++count_;
    check(count_ < UINT16_MAX, name, "is one file too many for a pack");
  }

  Bytes finish() {
    const auto start = static_cast<uint32_t>(bytes_.size());
    append(bytes_, directory_);
    appendU32(bytes_, 0x06054B50);
    appendU32(bytes_, 0);  // disks
    appendU16(bytes_, count_);
    appendU16(bytes_, count_);
    appendU32(bytes_, static_cast<uint32_t>(directory_.size()));
    appendU32(bytes_, start);
    appendU16(bytes_, 0);  // comment
    return std::move(bytes_);
  }

 private:
  static Bytes deflated(const Bytes& data) {
    z_stream stream{};
    if (deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, -MAX_WBITS, 9, Z_DEFAULT_STRATEGY) != Z_OK) {
      throw PackError("zlib refuses to work");
    }
    const std::unique_ptr<z_stream, decltype(&deflateEnd)> end(&stream, deflateEnd);
    Bytes result(deflateBound(&stream, static_cast<uLong>(data.size())));
    stream.next_in = const_cast<Bytef*>(data.data());
    stream.avail_in = static_cast<uInt>(data.size());
    stream.next_out = result.data();
    stream.avail_out = static_cast<uInt>(result.size());
    if (deflate(&stream, Z_FINISH) != Z_STREAM_END) throw PackError("zlib refuses to work");
    result.resize(stream.total_out);
    return result;
  }

  Bytes bytes_;
  Bytes directory_;
  uint16_t count_ = 0;
};

}  // namespace

std::string packNameFault(std::string_view name) {
  const std::wstring wide = fromUtf8(name);
  if (toUtf8(wide) != name) return "is not UTF-8";
  if (wide.size() > kLongestName) return "is longer than 260 characters";
  if (isFolder(name)) name.remove_suffix(1);
  for (;;) {
    const size_t end = name.find('/');
    const std::string fault = partFault(name.substr(0, end));
    if (!fault.empty() || end == std::string_view::npos) return fault;
    name.remove_prefix(end + 1);
  }
}

std::vector<std::string> packNameFaults(const std::vector<std::string>& names) {
  std::vector<std::string> faults;
  // What stands where on Windows: folded path to its spelling and whether it is a folder.
  std::map<std::string, std::pair<std::string, bool>> seen;
  const auto place = [&](const std::string& path, bool folder) {
    const auto [other, isNew] = seen.try_emplace(foldCase(path), path, folder);
    if (isNew || (folder && other->second == std::pair(path, true))) return;
    faults.push_back(path + ": is also there as " + other->second.first + (other->second.second ? "/" : ""));
  };
  std::vector<std::string> sorted = names;
  std::sort(sorted.begin(), sorted.end());
  for (const std::string& name : sorted) {
    if (const std::string fault = packNameFault(name); !fault.empty()) {
      faults.push_back(name + ": " + fault);
      continue;
    }
    for (size_t at = name.find('/'); at != std::string::npos; at = name.find('/', at + 1)) {
      place(name.substr(0, at), true);
    }
    if (!isFolder(name)) place(name, false);
  }
  return faults;
}

Bytes writePack(std::vector<std::string> names, const std::function<Bytes(const std::string&)>& read,
                std::string_view vmName) {
  if (const std::vector<std::string> faults = packNameFaults(names); !faults.empty()) {
    throw PackError(faults.front());
  }
  std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
    return std::pair(rank(a), std::string_view(a)) < std::pair(rank(b), std::string_view(b));
  });
  if (names.empty() || rank(names.back()) != 2) throw PackError("there is no bin/java.exe in it");

  ZipWriter inner;
  for (const std::string& name : names) {
    inner.add(name, isFolder(name) ? Bytes() : read(name), ZipWriter::Method::kDeflated);
  }
  ZipWriter outer;
  outer.add("vm.zip", inner.finish(), ZipWriter::Method::kStored);
  const std::string properties = "vm.name=" + std::string(vmName) + "\n";
  outer.add("vm.properties", Bytes(properties.begin(), properties.end()), ZipWriter::Method::kStored);
  return outer.finish();
}

}  // namespace ryn
