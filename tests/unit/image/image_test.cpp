#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <tuple>

#include "image/icon.h"
#include "image/manifest.h"
#include "image/string_block.h"
#include "image/version_info.h"
#include "tests/unit/image/image_builder.h"

namespace ryn {
namespace {

using test::bytesOf;
using test::complaint;
using test::makeImage;

Resources someResources() {
  Resources resources;
  resources[{kRtManifest, 1, 1033}] = {bytesOf("<manifest/>"), 1252};
  resources[{kRtString, 7, 1033}] = {bytesOf("x"), 0};
  resources[{kRtString, 7, 1031}] = {bytesOf(""), 0};
  resources[{kRtGroupIcon, 2, 0}] = {bytesOf("number"), 0};
  resources[{kRtGroupIcon, std::wstring(L"ZOO"), 0}] = {bytesOf("zoo"), 0};
  resources[{kRtGroupIcon, std::wstring(L"app"), 0}] = {bytesOf("lower case"), 0};
  resources[{std::wstring(L"TYPELIB"), 1, 0}] = {bytesOf("library"), 0};
  return resources;
}

TEST(PeImageTest, ResourcesGrowAndShrinkAndNothingElseChanges) {
  for (const bool is64Bit : {false, true}) {
    const Bytes before = makeImage(is64Bit, someResources(), "odd overlay");
    Resources resources = readResources(PeImage(before));
    EXPECT_EQ(resources, someResources());
    resources[{10, 1, 0}].data = Bytes(18000, 0xAB);
    const Bytes after = withResources(PeImage(before), resources);

    const PeImage image(after);
    EXPECT_EQ(image.is64Bit(), is64Bit);
    EXPECT_EQ(readResources(image), resources);
    // What was behind follows at once, in memory and in the file.
    const Section& moved = image.sections()[2];
    EXPECT_EQ(moved.address, 0x7000u);
    EXPECT_EQ(moved.fileOffset, image.sections()[1].fileEnd());
    EXPECT_EQ(image.directory(kRelocationDirectory).address, moved.address);
    EXPECT_EQ(readU32(image.data(moved.address, 12), 8), 0x3008u);
    EXPECT_EQ(readU32(after, image.optionalHeader() + 56), 0x8000u);
    const size_t growth = after.size() - before.size();
    EXPECT_EQ(readU32(after, image.optionalHeader() + 8),
              readU32(before, image.optionalHeader() + 8) + growth);
    EXPECT_EQ(readU16(after, image.optionalHeader() + 70), 0x160);
    const size_t symbolTable = readU32(after, image.fileHeader() + 8);
    EXPECT_EQ(Bytes(after.begin() + static_cast<std::ptrdiff_t>(symbolTable), after.end()),
              bytesOf("odd overlay"));

    // Our linker leaves the padding out of the section's size.
    Bytes unpadded = before;
    const size_t sizeField = image.sections()[1].headerOffset + 16;
    writeU32(unpadded, sizeField, readU32(before, sizeField) - 7);
    EXPECT_TRUE(withResources(PeImage(unpadded), resources) == after);

    // Back again, and every byte is as before.
    EXPECT_TRUE(withResources(image, someResources()) == before);
  }
}

TEST(PeImageTest, DirectoryIsInTheOrderOfTheLoader) {
  const Bytes bytes = makeImage(true, someResources());
  const PeImage image(bytes);
  const DataDirectory directory = image.directory(kResourceDirectory);
  const ByteView data = image.data(directory.address, directory.size);
  const auto keys = [&](size_t table) {
    std::vector<std::wstring> found;
    for (size_t i = 0; i < size_t{readU16(data, table + 12)} + readU16(data, table + 14); ++i) {
      const uint32_t key = readU32(data, table + 16 + 8 * i);
      EXPECT_EQ((key >> 31) != 0, i < readU16(data, table + 12));
      std::wstring text = (key >> 31) != 0 ? L"" : std::to_wstring(key);
      for (size_t c = 0; (key >> 31) != 0 && c < readU16(data, key & 0xFFFF); ++c) {
        text.push_back(readU16(data, (key & 0xFFFF) + 2 + 2 * c));
      }
      found.push_back(text);
    }
    return found;
  };
  using Keys = std::vector<std::wstring>;
  EXPECT_EQ(keys(0), (Keys{L"TYPELIB", L"6", L"14", L"24"}));
  const uint32_t icons = readU32(data, 16 + 8 * 2 + 4) & 0xFFFF;
  EXPECT_EQ(keys(icons), (Keys{L"app", L"ZOO", L"2"}));
}

TEST(PeImageTest, RefusesWhatItCannotChange) {
  const Bytes good = makeImage(true, someResources(), "overlay");
  const PeImage image(good);
  const size_t optional = image.optionalHeader();
  const size_t lastHeader = image.sections()[2].headerOffset;
  const std::tuple<const char*, std::function<void(Bytes&)>, const char*> rows[] = {
      {"empty", [](Bytes& b) { b.clear(); }, "it is no Windows program"},
      {"DOS", [](Bytes& b) { b[0x40] = 'N'; }, "it is no Windows program"},
      {"cut", [](Bytes& b) { b.resize(0x700); }, "it ends within a section"},
      {"overlap", [&](Bytes& b) { writeU32(b, lastHeader + 12, 0x2000); }, "its sections overlap"},
      {"signed", [&](Bytes& b) { writeU32(b, image.directoryOffset(kSecurityDirectory), 0x800); },
       "it is signed, and a change would make the signature invalid: take an unsigned one"},
      {"code behind", [&](Bytes& b) { writeU32(b, lastHeader + 36, 0x60000020); },
       "the program refers to what is behind its resources, so these cannot grow"},
      {"thread data behind", [&](Bytes& b) { writeU32(b, image.directoryOffset(9), 0x3000); },
       "the program refers to what is behind its resources, so these cannot grow"},
      {"imports among them", [&](Bytes& b) { writeU32(b, image.directoryOffset(1), 0x2010); },
       "its resources are not in a section of their own"},
      {"none", [&](Bytes& b) { writeU32(b, image.directoryOffset(kResourceDirectory), 0); },
       "it has no resources"},
      {"alignment", [&](Bytes& b) { writeU32(b, optional + 36, 3); }, "its headers are damaged"},
      {"root", [](Bytes& b) { writeU16(b, 0x400 + 14, 0xFFFF); }, "its resource directory is damaged"},
  };
  for (const auto& [name, change, text] : rows) {
    Bytes bytes = good;
    change(bytes);
    EXPECT_EQ(complaint([&] {
                const PeImage changed(bytes);
                Resources resources = readResources(changed);
                resources[{10, 1, 0}].data.resize(10000);
                withResources(changed, resources);
              }),
              text)
        << name;
  }
}

// Whatever the bytes are, there is a result or an ImageError. (Worth most with the sanitizers.)
TEST(PeImageTest, SurvivesDamageAnywhere) {
  for (const bool is64Bit : {false, true}) {
    const Bytes good = makeImage(is64Bit, someResources(), "overlay");
    const auto use = [](const Bytes& bytes) {
      complaint([&] {
        const PeImage image(bytes);
        EXPECT_EQ(readResources(PeImage(withResources(image, readResources(image)))), readResources(image));
      });
    };
    for (size_t size = 0; size < good.size(); size += 3)
      use(Bytes(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size)));
    for (size_t at = 0; at < 0x600; ++at) {
      for (const unsigned flip : {0x01U, 0x80U, 0xFFU}) {
        Bytes bytes = good;
        bytes[at] = static_cast<uint8_t>(bytes[at] ^ flip);
        use(bytes);
      }
    }
  }
}

TEST(ResourcesTest, ReplacingLeavesOneLanguage) {
  Resources resources = someResources();
  replaceInAllLanguages(resources, kRtString, 7, bytesOf("new"));
  EXPECT_EQ(resources.at({kRtString, 7, 1031}).data, bytesOf("new"));
  EXPECT_FALSE(resources.contains({kRtString, 7, 1033}));
  replaceInAllLanguages(resources, kRtVersion, 1, bytesOf("first"));
  EXPECT_EQ(firstLanguage(resources, kRtVersion, 1), 0);
  EXPECT_EQ(firstLanguage(resources, kRtVersion, 2), std::nullopt);
}

TEST(VersionInfoTest, ReadsWhatItWritesAndOtherOrders) {
  VersionInfo info;
  info.fileVersion = {2, 4, 0, 17};
  info.productVersion = {65535, 1, 2, 3};
  info.tables = {
      {L"040904b0",
       {{L"CompanyName", L"Caf\u00e9 \xd83d\xde00"}, {L"Empty", L""}, {L"ProductName", L"MyApp"}}}};
  const Bytes bytes = writeVersionInfo(info);
  EXPECT_EQ(readU16(bytes, 0), bytes.size());
  EXPECT_EQ(readVersionInfo(bytes), info);
  EXPECT_EQ(readVersionInfo(bytes).text(L"ProductName"), L"MyApp");
  EXPECT_EQ(versionText(info.fileVersion), L"2.4.0.17");

  // The other part first, as some compilers write it: 40 bytes of header and key, 52 of numbers.
  const auto split = 92 + std::ptrdiff_t{(readU16(bytes, 92) + 3) / 4} * 4;
  Bytes swapped(bytes.begin(), bytes.begin() + 92);
  swapped.insert(swapped.end(), bytes.begin() + split, bytes.end());
  swapped.insert(swapped.end(), bytes.begin() + 92, bytes.begin() + split);
  EXPECT_EQ(readVersionInfo(swapped), info);

  for (size_t size = 0; size < bytes.size(); ++size) {
    EXPECT_NE(complaint([&] { readVersionInfo(ByteView(bytes).first(size)); }), "") << size;
  }
  info.tables[0].strings[0].second.resize(40000, L'x');
  EXPECT_EQ(complaint([&] { writeVersionInfo(info); }), "its version information becomes too large");
}

Bytes png(unsigned width, unsigned height, char depth, char colourType) {
  std::string text("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0", 18);
  text += static_cast<char>(width >> 8);
  text += static_cast<char>(width);
  text += std::string(2, '\0') + static_cast<char>(height >> 8) + static_cast<char>(height);
  text += depth;
  text += colourType;
  return bytesOf(text + std::string(11, '\0') + "IEND" + "sum.");
}

Bytes bitmap(unsigned size, uint16_t bitCount, size_t dataSize) {
  Bytes bytes;
  for (const unsigned field : {40U, size, 2 * size, 1U | static_cast<unsigned>(bitCount) << 16})
    appendU32(bytes, field);
  bytes.resize(40 + dataSize, 0x5A);
  std::fill(bytes.begin() + 16, bytes.begin() + 40, uint8_t{0});
  return bytes;
}

/// Its list says nothing true about the pictures but where they are.
Bytes ico(const std::vector<Bytes>& pictures) {
  Bytes bytes;
  for (const size_t field : {size_t{0}, size_t{1}, pictures.size()})
    appendU16(bytes, static_cast<uint16_t>(field));
  size_t offset = 6 + 16 * pictures.size();
  for (const Bytes& picture : pictures) {
    appendU32(bytes, 0);
    appendU32(bytes, 0);
    appendU32(bytes, static_cast<uint32_t>(picture.size()));
    appendU32(bytes, static_cast<uint32_t>(offset));
    offset += picture.size();
  }
  for (const Bytes& picture : pictures) append(bytes, picture);
  return bytes;
}

TEST(IconTest, GroupTakesThePlaceOfAnother) {
  const std::vector<IconImage> first = readIcon(ico({bitmap(16, 32, 1024), bitmap(16, 4, 64 + 128 + 64)}));
  const std::vector<IconImage> second = readIcon(ico({png(256, 256, 8, 6), bitmap(32, 24, 3072 + 128)}));
  ASSERT_EQ(second.size(), 2u);
  EXPECT_EQ(std::tuple(second[0].width, second[0].bitCount, second[1].height, second[1].bitCount),
            std::tuple(256u, 32, 32u, 24));
  EXPECT_EQ(first[1].colours, 16);

  const ResourceId name = std::wstring(L"DOWNLOADING JVM PACK");
  Resources resources;
  setIconGroup(resources, 5, first);
  setIconGroup(resources, name, first);
  setIconGroup(resources, name, second);
  EXPECT_EQ(iconGroup(resources, 5), first);
  EXPECT_EQ(iconGroup(resources, name), second);
  // Two of each, under numbers of their own; the replaced ones are gone.
  EXPECT_EQ(std::count_if(resources.begin(), resources.end(),
                          [](const auto& item) { return item.first.type == kRtIcon; }),
            4);
  const Bytes& group = resources.at({kRtGroupIcon, name, 0}).data;
  EXPECT_EQ(std::tuple(group.size(), readU16(group, 2), group[6], group[7]), std::tuple(34u, 1, 0, 0));
  EXPECT_EQ(readIcon(png(48, 48, 8, 6)), (std::vector<IconImage>{{48, 48, 0, 1, 32, png(48, 48, 8, 6)}}));
}

TEST(IconTest, RefusesWhatWindowsWouldNotShow) {
  Bytes cut = ico({bitmap(16, 32, 1024)});
  cut.pop_back();
  Bytes noEnd = png(16, 16, 8, 6);
  noEnd.resize(noEnd.size() - 12);
  const std::pair<Bytes, const char*> rows[] = {
      {{}, "it is neither an .ico nor a .png file"},
      {bytesOf("GIF89a"), "it is neither an .ico nor a .png file"},
      {ico({}), "its list of pictures is damaged"},
      {cut, "a picture in it ends too early"},
      {ico({bitmap(16, 8, 256)}), "a picture in it ends too early"},
      {ico({bytesOf("no picture")}), "a picture in it is neither a bitmap nor a PNG"},
      {noEnd, "its PNG data are damaged"},
      {png(512, 512, 8, 6), "it is larger than 256 x 256 pixels"},
      {png(32, 16, 8, 6), "it is not square"},
      {png(16, 16, 8, 3), "its pixels are not red, green, blue and transparency of 8 bits each (RGBA)"},
      {png(16, 16, 8, 1), "its PNG data are damaged"},
  };
  for (const auto& [file, text] : rows) EXPECT_EQ(complaint([&bytes = file] { readIcon(bytes); }), text);
}

TEST(StringBlockTest, ReadsAndReplacesTexts) {
  Resources resources;
  resources[{kRtString, 7, 1033}].data.resize(32);
  setString(resources, 101, 1033, L"old \xd83d\xde00");
  setString(resources, 110, 1033, L"title");
  EXPECT_EQ(findString(resources, 101, 1033), L"old \xd83d\xde00");
  for (const auto& [id, language] : {std::pair<unsigned, uint16_t>{100, 1033}, {101, 1031}, {117, 1033}}) {
    EXPECT_EQ(findString(resources, id, language), std::nullopt) << id;
  }
  changeStrings(resources, [](unsigned id, uint16_t language, const std::wstring& text) {
    return text + L" " + std::to_wstring(id) + L" " + std::to_wstring(language);
  });
  EXPECT_EQ(findString(resources, 110, 1033), L"title 110 1033");
  EXPECT_EQ(resources.at({kRtString, 7, 1033}).data.size(), 32 + 2 * (15 + 14));
  EXPECT_EQ(complaint([&] { setString(resources, 101, 1031, L""); }),
            "it has no table of texts in that language");
  resources.at({kRtString, 7, 1033}).data.pop_back();
  EXPECT_EQ(complaint([&] { findString(resources, 101, 1033); }), "a table of texts in it is damaged");
}

TEST(ManifestTest, SetsTheLevelOnly) {
  const std::pair<std::string, std::string> rows[] = {
      {"<a><requestedExecutionLevel level=\"asInvoker\" uiAccess=\"false\"/></a>",
       "<a><requestedExecutionLevel level=\"requireAdministrator\" uiAccess=\"false\"/></a>"},
      {"<!-- <requestedExecutionLevel level='x'/> --><v3:requestedExecutionLevel\n uiAccess = 'level' level "
       "= ''>",
       "<!-- <requestedExecutionLevel level='x'/> --><v3:requestedExecutionLevel\n uiAccess = 'level' level "
       "= "
       "'requireAdministrator'>"},
  };
  for (const auto& [before, after] : rows) {
    EXPECT_EQ(withExecutionLevel(before, ExecutionLevel::kRequireAdministrator), after);
  }
  for (const char* text : {"", "<a/>", "<!-- <requestedExecutionLevel level=''/>", "<requestedExecutionLevel",
                           "<requestedExecutionLevel level='", "<requestedExecutionLevel/><b level='x'/>"}) {
    EXPECT_EQ(complaint([&] { withExecutionLevel(text, ExecutionLevel::kAsInvoker); }),
              "its manifest does not say an execution level")
        << text;
  }
}

}  // namespace
}  // namespace ryn
