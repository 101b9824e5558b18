#include "vmsearch/vm_validator.h"

#include <gmock/gmock.h>
#include <shellapi.h>

#include "platform/files.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/unique_handle.h"
#include "tests/unit/support/temp_folder.h"

namespace ryn {
namespace {

// Copies of this program are the VMs: started on the validator class, one notes how it was started in the
// file "runs" beside it and does what the token says.
int actAsVm(const std::wstring& token) {
  const std::wstring folder = folderPart(modulePath());
  {
    const CStream runs(_wfopen((folder + L"\\runs").c_str(), L"ab"));
    std::fputs((toUtf8(GetCommandLineW()) + "\n").c_str(), runs.get());
  }
  if (token.starts_with(L"exit=")) return parseInteger(token.substr(5));
  const std::string block(1 << 20, 'x');
  if (token == L"megabytes") {
    for (int i = 0; i < 3; ++i) std::fwrite(block.data(), 1, block.size(), stdout);
    return std::fflush(stdout);
  }
  if (token == L"hang" || token == L"chatter") {
    const UniqueFile alive(CreateFileW((folder + L"\\alive").c_str(), GENERIC_WRITE, 0, nullptr,
                                       CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    const ULONGLONG end = GetTickCount64() + 60'000;
    while (GetTickCount64() < end) {
      if (token == L"hang")
        Sleep(60'000);
      else
        std::fwrite(block.data(), 1, block.size(), stdout);
    }
  }
  if (token.starts_with(L"set=")) {
    SetEvent(reinterpret_cast<HANDLE>(static_cast<intptr_t>(parseInteger(token.substr(4)))));
  }
  return 0;
}

class VmValidatorTest : public testing::Test {
 protected:
  std::wstring install(const std::wstring& name) const {
    folder_.write(name);
    EXPECT_TRUE(CopyFileW(modulePath().c_str(), folder_.at(name).c_str(), FALSE));
    return folder_.at(name);
  }

  /// Command lines of the starts of VMs in `folder`.
  std::vector<std::wstring> runs(const std::wstring& folder = L"vm") const {
    const std::wstring path = folder_.at(folder + L"\\runs");
    if (!fileExists(path)) return {};
    std::vector<std::wstring> lines = split(fromUtf8(test::readBytes(path)), L'\n');
    lines.pop_back();
    return lines;
  }

  const test::TempFolder folder_{test::TempFolder::Name::kNonAscii};
  const std::wstring jar_ = folder_.at(L"Verify.jar");
  VmValidator validator_{30'000};
};

TEST_F(VmValidatorTest, AnswersByTheExitCodeAndStartsOnce) {
  const std::wstring java = install(L"vm\\java.exe");
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(validator_.ask(java, jar_, L"exit=0"), ValidatorAnswer::kAccepted);
    EXPECT_EQ(validator_.ask(java, jar_, L"exit=259"), ValidatorAnswer::kRejected);
    EXPECT_EQ(validator_.ask(folder_.write(L"broken\\java.exe", "no program"), jar_, L"exit=0"),
              ValidatorAnswer::kNotStarted);
  }
  const std::wstring start = L"\"" + java + L"\" -classpath \"" + jar_ + L"\" com.vantu.util.jvm.Validator ";
  EXPECT_THAT(runs(), testing::ElementsAre(start + L"\"exit=0\"", start + L"\"exit=259\""));
}

TEST_F(VmValidatorTest, QuotesTheToken) {
  const std::wstring java = install(L"vm\\java.exe");
  for (const std::wstring token : {L"1.8*", L"end\\", L"\\", L"\\\\", L"a\\b", L"\u4e2d"}) {
    ASSERT_EQ(validator_.ask(java, jar_, token), ValidatorAnswer::kAccepted) << token;
    int count = 0;
    wchar_t** arguments = CommandLineToArgvW(runs().back().c_str(), &count);
    EXPECT_EQ(count, 5) << token;
    EXPECT_EQ(arguments[count - 1], token);
    LocalFree(arguments);
  }
}

TEST_F(VmValidatorTest, TakesMuchOutput) {
  EXPECT_EQ(validator_.ask(install(L"vm\\java.exe"), jar_, L"megabytes"), ValidatorAnswer::kAccepted);
}

TEST_F(VmValidatorTest, EndsWhatTakesTooLong) {
  const std::wstring java = install(L"vm\\java.exe");
  for (const wchar_t* token : {L"hang", L"chatter"}) {
    VmValidator impatient(1500);
    EXPECT_EQ(impatient.ask(java, jar_, token), ValidatorAnswer::kTimedOut);
    const ULONGLONG end = GetTickCount64() + 10'000;
    bool ended = false;
    while (!ended && GetTickCount64() < end) ended = DeleteFileW(folder_.at(L"vm\\alive").c_str());
    EXPECT_TRUE(ended) << token;
  }
  EXPECT_THAT(runs(), testing::SizeIs(2));
}

TEST_F(VmValidatorTest, HandsOnNoOtherHandles) {
  SECURITY_ATTRIBUTES inheritable = {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  const UniqueHandle event(CreateEventW(&inheritable, TRUE, FALSE, nullptr));
  const std::wstring number = std::to_wstring(reinterpret_cast<intptr_t>(event.get()));
  EXPECT_EQ(validator_.ask(install(L"vm\\java.exe"), jar_, L"set=" + number), ValidatorAnswer::kAccepted);
  EXPECT_EQ(WaitForSingleObject(event.get(), 0), static_cast<DWORD>(WAIT_TIMEOUT));
}

}  // namespace
}  // namespace ryn

int main(int argc, char** argv) {
  if (argc > 1 && std::string_view(argv[1]) == "-classpath") {
    int count = 0;
    wchar_t** arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    return count == 5 ? ryn::actAsVm(arguments[4]) : 2;
  }
  testing::InitGoogleMock(&argc, argv);
  return RUN_ALL_TESTS();
}
