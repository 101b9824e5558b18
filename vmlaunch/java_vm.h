#pragma once

#include <memory>
#include <string>

#include "platform/unique_handle.h"
#include "platform/user_prompt.h"
#include "vmlaunch/launch_request.h"
#include "vmlaunch/vm_command_line.h"
#include "vmsearch/vm_candidate.h"

namespace ryn {

/// What a VM object needs of the program that launches it.
struct VmHost {
  /// The launcher has a console: the VM's console executable is run.
  bool console = false;
  UserPrompt& prompt;
  /// True when the folder is one that the security check refuses.
  bool (*refusesFolder)(const std::wstring& folder);
};

/// An installed VM that knows which of its programs to run and which options that program speaks.
class JavaVM {
 public:
  JavaVM(const VmCandidate& candidate, const VmHost& host);

  /// Starts the VM. Returns the process, or an empty handle when the launch is refused; the user has then
  /// been told. Throws TerminalError when the VM is too old or its process cannot be started.
  virtual UniqueHandle launch(LaunchRequest request, bool wait) = 0;

  /// `launch` without waiting.
  virtual UniqueHandle launchDefault(const LaunchRequest& request) = 0;

  /// Full path of the program that `launch` runs; not tested for existence when it is the last resort.
  virtual std::wstring executablePath() const = 0;

  JavaVersion version() const { return version_; }
  const std::wstring& home() const { return home_; }
  std::wstring_view vendor() const { return vendor_; }

 protected:
  ~JavaVM() = default;

  const VmHost& host() const { return host_; }

 private:
  JavaVersion version_;
  std::wstring home_;
  std::wstring_view vendor_;
  VmHost host_;
};

/// Generation 1: its own option dialect, jre.exe or java.exe.
class ClassicJavaVM final : public JavaVM {
 public:
  using JavaVM::JavaVM;
  UniqueHandle launch(LaunchRequest request, bool wait) override;
  UniqueHandle launchDefault(const LaunchRequest& request) override { return launch(request, false); }
  std::wstring executablePath() const override;
};

/// Every later VM: the -X dialect; the only kind whose folder is checked.
class ModernJavaVM final : public JavaVM {
 public:
  using JavaVM::JavaVM;
  UniqueHandle launch(LaunchRequest request, bool wait) override;
  UniqueHandle launchDefault(const LaunchRequest& request) override { return launch(request, false); }
  std::wstring executablePath() const override;
};

/// jview.exe.
class MicrosoftJavaVM final : public JavaVM {
 public:
  using JavaVM::JavaVM;
  UniqueHandle launch(LaunchRequest request, bool wait) override;
  UniqueHandle launchDefault(const LaunchRequest& request) override { return launch(request, false); }
  std::wstring executablePath() const override;
};

/// The deleter knows the concrete class.
using JavaVmPtr = std::unique_ptr<JavaVM, void (*)(JavaVM*)>;

/// The object for a VM that discovery found.
JavaVmPtr makeJavaVm(const VmCandidate& candidate, const VmHost& host);

}  // namespace ryn
