#include "vmsearch/vm_validator.h"

#include <gtest/gtest.h>
#include <shellapi.h>

#include "platform/paths.h"
#include "platform/text.h"
#include "platform/unique_handle.h"
#include "tests/unit/support/temp_folder.h"

namespace ryn {
namespace {

// Copies of this program are the VMs, which do what the token says. What they are asked, and how often, the
// end-to-end tests see.
int actAsVm(const std::wstring& token) {
  const std::string block(1 << 20, 'x');
  if (token == L"megabytes") {
    for (int i = 0; i < 3; ++i) std::fwrite(block.data(), 1, block.size(), stdout);
    return std::fflush(stdout);
  }
  if (token == L"hang" || token == L"chatter") {
    const UniqueFile alive(CreateFileW((folderPart(modulePath()) + L"\\alive").c_str(), GENERIC_WRITE, 0,
                                       nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
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
  std::wstring install() const {
    const std::wstring java = folder_.write(L"java.exe");
    EXPECT_TRUE(CopyFileW(modulePath().c_str(), java.c_str(), FALSE));
    return java;
  }

  const test::TempFolder folder_{test::TempFolder::Name::kNonAscii};
  const std::wstring jar_ = folder_.at(L"Verify.jar");
  VmValidator validator_{30'000};
};

TEST_F(VmValidatorTest, TakesMuchOutputAndNoProgram) {
  EXPECT_EQ(validator_.ask(install(), jar_, L"megabytes"), ValidatorAnswer::kAccepted);
  EXPECT_EQ(validator_.ask(folder_.write(L"javaw.exe", "broken"), jar_, L"x"), ValidatorAnswer::kNotStarted);
}

TEST_F(VmValidatorTest, EndsWhatTakesTooLong) {
  const std::wstring java = install();
  for (const wchar_t* token : {L"hang", L"chatter"}) {
    VmValidator impatient(1500);
    EXPECT_EQ(impatient.ask(java, jar_, token), ValidatorAnswer::kTimedOut);
    const ULONGLONG end = GetTickCount64() + 10'000;
    bool ended = false;
    // On a busy machine it ended before it came to make the file.
    while (!ended && GetTickCount64() < end)
      ended = DeleteFileW(folder_.at(L"alive").c_str()) || GetLastError() == ERROR_FILE_NOT_FOUND;
    EXPECT_TRUE(ended) << token;
  }
}

TEST_F(VmValidatorTest, HandsOnNoOtherHandles) {
  SECURITY_ATTRIBUTES inheritable = {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  const UniqueHandle event(CreateEventW(&inheritable, TRUE, FALSE, nullptr));
  const std::wstring number = std::to_wstring(reinterpret_cast<intptr_t>(event.get()));
  EXPECT_EQ(validator_.ask(install(), jar_, L"set=" + number), ValidatorAnswer::kAccepted);
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
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
