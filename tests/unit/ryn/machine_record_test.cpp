#include "ryn/machine_record.h"

#include <gtest/gtest.h>

#include "tests/unit/support/fake_probe.h"

namespace ryn {
namespace {

TEST(MachineRecordTest, ARecordAnswersAsTheMachineDid) {
  test::FakeProbe machine;
  machine.vm(L"C:\\Jdk\\bin", {17, 0, 65535, 1});
  machine.resources[L"C:\\Jdk\\bin\\java.exe"].companyName = L"IB\x00dc";
  machine.resources[L"C:\\Jdk\\bin\\java.exe"].fileVersion = {1, 2, 3, 4};
  machine.images32.insert(L"C:\\Jdk\\bin\\javaw.exe");
  machine.folder(L"C:\\Jdk\\link");
  machine.links[L"C:\\Jdk\\link"] = L"D:\\target";
  machine.texts[L"C:\\a.txt"] = L"\x00c3\x00a9\n";
  machine.value(L"HKLM\\A\\1", L"", L"\x5fdc");
  machine.registry64[L"\\HKEY_LOCAL_MACHINE\\B\\2"][L"Home"] = L"C:\\";
  machine.wow64 = machine.administrator = machine.elevated = true;
  machine.shortPaths[L"C:\\long"] = L"C:\\LO~1";
  machine.unsafe.insert(L"C:\\open");
  machine.answers[L"a.exe"] = ValidatorAnswer::kTimedOut;

  MachineRecord record;
  const RecordingProbe recorder(machine, record);
  // All that can be asked, in one text.
  const auto ask = [](const VmProbe& probe) {
    std::wstring told;
    const auto tell = [&](const std::optional<std::wstring>& text) { told += text.value_or(L"-") + L"\n"; };
    const auto tellAll = [&](const std::optional<std::vector<std::wstring>>& texts) {
      tell(decimal(texts ? static_cast<long long>(texts->size()) : -1));
      for (const std::wstring& text : texts.value_or(std::vector<std::wstring>())) tell(text);
    };
    for (const wchar_t* path : {L"C:\\Jdk\\bin\\java.exe", L"C:\\Jdk\\bin\\javaw.exe", L"C:\\Jdk\\link",
                                L"C:\\a.txt", L"C:\\long", L"C:\\open", L"C:\\none"}) {
      const VersionResource version = probe.versionResource(path);
      tell(concat({decimal(static_cast<int>(probe.pathKind(path))), probe.resolveLink(path),
                   decimal(static_cast<int>(probe.imageBitness(path))), version.companyName,
                   probe.readText(path).value_or(L"-"), probe.shortPath(path).value_or(path),
                   decimal(probe.refusesFolder(path)), probe.fitsAnsi(path) ? L"fits" : L""}));
      for (const auto& numbers : {version.fileVersion, version.productVersion})
        for (const uint16_t number : numbers.value_or(FourPartVersion())) tell(decimal(number));
    }
    for (const Subfolder& folder : probe.subfolders(L"C:\\Jdk", L"*"))
      tell(folder.name + (folder.isLink ? L" link" : L""));
    for (const RegistryView view : {RegistryView::kNative, RegistryView::k64}) {
      for (const wchar_t* key : {L"\\HKEY_LOCAL_MACHINE\\A", L"\\HKEY_LOCAL_MACHINE\\B"}) {
        tellAll(probe.subkeyNames(key, view));
        tell(probe.registryText(concat({key, L"\\1"}), view, L""));
        tell(probe.registryText(concat({key, L"\\2"}), view, L"Home"));
      }
    }
    tellAll(probe.fixedDrives());
    tell(probe.wow64SystemFolder());
    for (const bool flag : {probe.underWow64(), probe.isAdministrator(), probe.isElevated(),
                            probe.fitsAnsi(L"\x5fdc"), probe.fitsAnsi(L"\x00e9")})
      tell(decimal(flag));
    for (const wchar_t* executable : {L"a.exe", L"b.exe"})
      tell(decimal(static_cast<int>(probe.validate(executable, L"Verify.jar", L"x"))));
    return told;
  };
  const std::wstring told = ask(machine);
  EXPECT_EQ(ask(recorder), told);
  const MachineRecord read = MachineRecord::parse(record.dump());
  const FolderProbe nothing("/none");
  EXPECT_EQ(ask(ReplayProbe(read, L"C:\\app", nothing)), told);
}

TEST(MachineRecordTest, TheUserIsHidden) {
  const EnvironmentMap environment = {{L"USERNAME", L"Ann"},
                                      {L"USERPROFILE", L"C:\\Users\\Ann Lee\\"},
                                      {L"TEMP", L"c:\\users\\ANNLEE~1\\AppData\\Local\\Temp"}};
  const std::pair<const char*, const char*> rows[] = {
      {"c:\\users\\ann lee", "C:\\Users\\user"},
      {"\"C:/Users/Ann Lee/x\";C:\\Users\\Ann Lee\\y", "\"C:/Users/user/x\";C:\\Users\\user\\y"},
      {"C:\\Users\\Ann Leeds\\ANN\\b", "C:\\Users\\user Leeds\\user\\b"},
      {"C:\\Users\\annlee~1\\AppData", "C:\\Users\\user\\AppData"},
      {"D:\\work\\ann\\jdk;E:\\Anna\\Joann", "D:\\work\\user\\jdk;E:\\Anna\\Joann"},
      {"-Duser=Ann", "-Duser=user"},
  };
  for (const auto& [text, hidden] : rows) {
    MachineRecord record = {{text, {text}}};
    hideUser(record, environment, L"%ProgramFiles%\\Anna\\*");
    EXPECT_EQ(record, (MachineRecord{{hidden, {hidden}}})) << text;
  }
  // Where VMs are looked for has to stay.
  MachineRecord record = {"D:\\Ann\\jdk", "C:\\Users\\Ann Lee"};
  hideUser(record, environment, L"D:\\ann\\*");
  EXPECT_EQ(record, (MachineRecord{"D:\\Ann\\jdk", "C:\\Users\\user"}));
}

}  // namespace
}  // namespace ryn
