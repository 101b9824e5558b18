#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "resolve/resolve_vm.h"
#include "tests/unit/support/fake_probe.h"
#include "vmsearch/vm_description.h"

namespace ryn {
namespace {

std::wstring sample(const char* name) {
  std::ifstream file(std::string(RYN_VENDORS_FOLDER "/") + name, std::ios::binary);
  const std::string bytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>{});
  return {bytes.begin(), bytes.end()};
}

/// samples/vendors: each place alone, one row for each hint of the description, in its order.
TEST(VendorsTest, FindsEachVmAlone) {
  const struct {
    /// Empty for a hint of folders.
    std::wstring key;
    const wchar_t* name;
    const wchar_t* home;
  } rows[] = {
      {L"HKLM\\SOFTWARE\\JavaSoft\\JDK\\17.0.9", L"JavaHome", L"D:\\oracle\\jdk-17"},
      {L"HKLM\\SOFTWARE\\JavaSoft\\JRE\\9.0.4", L"JavaHome", L"D:\\oracle\\jre-9.0.4"},
      {L"HKLM\\SOFTWARE\\JavaSoft\\Java Development Kit\\1.8.0_392", L"JavaHome", L"D:\\oracle\\jdk8"},
      {L"HKLM\\SOFTWARE\\JavaSoft\\Java Runtime Environment\\1.8", L"JavaHome", L"D:\\oracle\\jre8"},
      {L"", L"", L"C:\\Program Files\\Java\\jdk-21"},
      {L"HKLM\\SOFTWARE\\Eclipse Adoptium\\JDK\\17.0.9.9\\hotspot\\MSI", L"Path", L"D:\\temurin\\jdk"},
      {L"HKLM\\SOFTWARE\\Eclipse Adoptium\\JRE\\8.0.392.8\\hotspot\\MSI", L"Path", L"D:\\temurin\\jre"},
      {L"", L"", L"C:\\Program Files\\Eclipse Adoptium\\jdk-17.0.9.9-hotspot"},
      {L"HKLM\\SOFTWARE\\Microsoft\\JDK\\17.0.10.7\\hotspot\\MSI", L"Path", L"D:\\microsoft"},
      {L"", L"", L"C:\\Program Files\\Microsoft\\jdk-17.0.10.7-hotspot"},
      {L"", L"", L"C:\\Program Files\\Amazon Corretto\\jdk17.0.18_9"},
      {L"HKLM\\SOFTWARE\\Azul Systems\\Zulu\\zulu-17", L"InstallationPath", L"D:\\zulu"},
      {L"", L"", L"C:\\Program Files\\Zulu\\zulu-21"},
      {L"HKLM\\SOFTWARE\\BellSoft\\Liberica\\LibericaJDK-17", L"InstallationPath", L"D:\\liberica"},
      {L"", L"", L"C:\\Program Files\\BellSoft\\LibericaJDK-21-Full"},
      {L"", L"", L"C:\\Program Files\\RedHat\\java-17-openjdk-17.0.19.0.10-1"},
      {L"HKLM\\SOFTWARE\\Semeru\\JDK\\17.0.6.10\\openj9\\MSI", L"Path", L"D:\\semeru\\jdk"},
      {L"HKLM\\SOFTWARE\\Semeru\\JRE\\11.0.20.101\\openj9\\MSI", L"Path", L"D:\\semeru\\jre"},
      {L"", L"", L"C:\\Program Files\\Semeru\\jdk-17.0.6.10-openj9"},
      {L"", L"", L"C:\\Program Files\\SapMachine\\JDK\\21"},
      {L"", L"", L"C:\\Users\\u\\AppData\\Local\\Programs\\Eclipse Adoptium\\jdk-21.0.11.10-hotspot"},
      {L"", L"", L"C:\\Users\\u\\AppData\\Local\\Programs\\Microsoft\\jdk-17.0.10.7-hotspot"},
      {L"HKCU\\SOFTWARE\\Eclipse Adoptium\\JDK\\21.0.1.12\\hotspot\\MSI", L"Path", L"D:\\mine\\jdk"},
      {L"HKCU\\SOFTWARE\\Eclipse Adoptium\\JRE\\21.0.1.12\\hotspot\\MSI", L"Path", L"D:\\mine\\jre"},
      {L"", L"", L"C:\\Users\\u\\scoop\\apps\\temurin21-jdk\\current"},
      {L"", L"", L"D:\\scoop\\apps\\openjdk17\\current"},
      {L"", L"", L"C:\\ProgramData\\scoop\\apps\\corretto-jdk\\current"},
      {L"", L"", L"C:\\Users\\u\\.jdks\\openjdk-25"},
      {L"", L"", L"D:\\java home"},
      {L"", L"", L"D:\\on path"},
  };
  const std::wstring description = sample("vendors.txt");
  const std::vector<std::wstring> hints = VmDescription::parse(description).pathHints;
  ASSERT_EQ(hints.size(), std::size(rows));
  PropertyFile properties, jvmspecs;
  properties.parse(L"ryn.nl.valid.vm.list=ALL\nryn.nl.win32.java.launcher.platform=2\n");
  jvmspecs.parse(sample("jvmspecs.properties"));
  const EnvironmentMap environment = {{L"ProgramFiles", L"C:\\Program Files"},
                                      {L"ProgramData", L"C:\\ProgramData"},
                                      {L"USERPROFILE", L"C:\\Users\\u"},
                                      {L"LOCALAPPDATA", L"C:\\Users\\u\\AppData\\Local"},
                                      {L"SCOOP", L"D:\\scoop"},
                                      {L"JAVA_HOME", L"D:\\java home"},
                                      {L"Path", L"C:\\Windows;D:\\on path\\bin"}};
  for (size_t i = 0; i < std::size(rows); ++i) {
    const auto& [key, name, home] = rows[i];
    SCOPED_TRACE(testing::PrintToString(home));
    test::FakeProbe machine;
    machine.texts[L"C:\\app\\jvmspecs\\vendors.txt"] = description;
    machine.vm(std::wstring(home) + L"\\bin", {17, 0, 9, 0});
    // Installers end the path with a separator.
    if (!key.empty()) machine.value(key, name, std::wstring(home) + L"\\");
    const VmChoice choice = resolveVm({.properties = properties,
                                       .jvmspecs = &jvmspecs,
                                       .applicationFolder = L"C:\\app",
                                       .environment = environment},
                                      machine, nullptr);
    ASSERT_TRUE(choice.chosen);
    EXPECT_EQ(choice.chosen->folder, home);
    // Found by its hint, and not by the walk behind all hints.
    EXPECT_EQ(choice.considered.front().where,
              L"C:\\app\\jvmspecs\\vendors.txt: " + (key.empty() ? hints[i] : machine.fullKey(key)));
  }
}

// Whoever looks for VMs with more rights than a user's must know which lines to leave out.
TEST(VendorsTest, WarnsOfPlacesThatUsersCanWriteTo) {
  std::wstring before;
  int warnings = 0;
  for (const std::wstring& line : split(sample("vendors.txt"), L'\n')) {
    const bool hint = line.starts_with(L"%") || line.starts_with(L"\\HKEY_");
    const bool safe = line.starts_with(L"%ProgramFiles%\\") || line.starts_with(L"\\HKEY_LOCAL_MACHINE\\");
    const bool warned = before.find(L"lain user can write there") != std::wstring::npos;
    if (hint) {
      EXPECT_EQ(warned, !safe) << testing::PrintToString(line);
      warnings += warned ? 1 : 0;
    }
    before = line;
  }
  EXPECT_EQ(warnings, 10);
}

}  // namespace
}  // namespace ryn
