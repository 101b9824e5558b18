#include "vmlaunch/vm_process.h"

#include <gtest/gtest.h>

#include "platform/errors.h"
#include "platform/system_library.h"
#include "platform/text.h"
#include "tests/unit/support/process_state.h"
#include "tests/unit/support/temp_folder.h"

namespace ryn {
namespace {

constexpr DWORD kLimitMs = 60'000;

/// Puts a handle in the place of a standard one, as the console or a redirection does.
class ScopedStandardHandle {
 public:
  ScopedStandardHandle(DWORD which, HANDLE handle) : which_(which), old_(GetStdHandle(which)) {
    SetHandleInformation(handle, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    SetStdHandle(which, handle);
  }
  ScopedStandardHandle(const ScopedStandardHandle&) = delete;
  ScopedStandardHandle& operator=(const ScopedStandardHandle&) = delete;
  ~ScopedStandardHandle() { SetStdHandle(which_, old_); }

 private:
  DWORD which_;
  HANDLE old_;
};

class VmProcessTest : public testing::Test {
 protected:
  VmProcessTest() { testing::internal::CaptureStderr(); }
  ~VmProcessTest() override { testing::internal::GetCapturedStderr(); }

  /// Starts cmd.exe in the VM's place; its standard output goes to the file "out".
  UniqueHandle start(const std::wstring& command, bool wait) const {
    const UniqueFile out(CreateFileW(folder_.at(L"out").c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                     CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    const ScopedStandardHandle output(STD_OUTPUT_HANDLE, out.get());
    return startVmProcess(request_, L"\"" + systemFolder() + L"\\cmd.exe\" /c " + command, wait);
  }
  std::string output() const { return test::readBytes(folder_.at(L"out")); }

  const test::TempFolder folder_;
  LaunchRequest request_;
};

TEST_F(VmProcessTest, WaitsAndWorksInTheFolder) {
  const std::wstring sub = folder_.makeFolder(L"sub");
  const test::ScopedCurrentFolder here(folder_.path());
  const std::pair<std::wstring, std::wstring> rows[] = {
      {L"", folder_.path()}, {sub, sub}, {sub + L"\\..\\sub\\.", sub}, {L"sub", sub}};
  for (const auto& [working, folder] : rows) {
    request_.workingDirectory = working;
    const UniqueHandle process = start(L"cd&exit 7", true);
    EXPECT_EQ(WaitForSingleObject(process.get(), 0), WAIT_OBJECT_0);
    DWORD code = 0;
    EXPECT_TRUE(GetExitCodeProcess(process.get(), &code));
    EXPECT_EQ(code, 7u);
    EXPECT_EQ(output(), toAnsi(folder) + "\r\n");
  }
}

TEST_F(VmProcessTest, ReturnsAtOnceAndHandsOnStandardInput) {
  HANDLE ends[2];
  ASSERT_TRUE(CreatePipe(&ends[0], &ends[1], nullptr, 0));
  UniqueHandle readEnd(ends[0]);
  UniqueHandle writeEnd(ends[1]);
  UniqueHandle process;
  {
    const ScopedStandardHandle input(STD_INPUT_HANDLE, readEnd.get());
    process = start(L"set /p line=&call echo [%line%]", false);
  }
  EXPECT_EQ(WaitForSingleObject(process.get(), 0), static_cast<DWORD>(WAIT_TIMEOUT));
  DWORD written = 0;
  WriteFile(writeEnd.get(), "hello\r\n", 7, &written, nullptr);
  writeEnd.reset();
  ASSERT_EQ(WaitForSingleObject(process.get(), kLimitMs), WAIT_OBJECT_0);
  EXPECT_EQ(output(), "[hello]\r\n");
}

TEST_F(VmProcessTest, TellsWindowsErrorNumber) {
  const std::wstring cmd = systemFolder() + L"\\cmd.exe";
  const std::tuple<std::wstring, std::wstring, const wchar_t*> rows[] = {
      {folder_.at(L"java.exe"), L"", L"2"},
      {cmd, folder_.at(L"missing"), L"267"},
  };
  for (const auto& [program, folder, number] : rows) {
    request_.workingDirectory = folder;
    try {
      startVmProcess(request_, L"\"" + program + L"\" /c exit", true);
      ADD_FAILURE() << "started: " << testing::PrintToString(program);
    } catch (const TerminalError& error) {
      EXPECT_EQ(error.message(),
                L"Windows error " + std::wstring(number) + L" occured while loading the Java VM");
    }
  }
}

TEST_F(VmProcessTest, LogsFolderAndCommandLine) {
  request_.workingDirectory = L"C:\\windows\\..\\" + std::wstring(300, L'x');
  EXPECT_THROW(startVmProcess(request_, L"\"C:\\missing.exe\" \"a b\" ", false), TerminalError);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "cwd: C:\\" + std::string(256, 'x') + "\ncmd: \"C:\\missing.exe\" \"a b\" \n");
  testing::internal::CaptureStderr();
}

}  // namespace
}  // namespace ryn
