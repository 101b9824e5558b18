#pragma once

#include <memory>
#include <string>

#include "platform/unique_handle.h"
#include "platform/user_prompt.h"
#include "vmlaunch/launch_plan.h"

namespace ryn {

/// The VM of a launch plan, which must outlive it, ready to be started.
class JavaVM {
 public:
  JavaVM(const LaunchPlan& plan, UserPrompt& prompt) : plan_(plan), prompt_(prompt) {}

  /// Starts the VM. Returns the process, or an empty handle when the launch is refused; the user has then
  /// been told. Throws TerminalError when the VM is too old or its process cannot be started.
  virtual UniqueHandle launch(LaunchRequest request, bool wait) = 0;

  /// `launch` without waiting.
  virtual UniqueHandle launchDefault(const LaunchRequest& request) = 0;

  /// Full path of the program that `launch` runs.
  virtual std::wstring executablePath() const { return plan_.program; }

 protected:
  ~JavaVM() = default;

  const LaunchPlan& plan() const { return plan_; }
  UserPrompt& prompt() const { return prompt_; }

 private:
  const LaunchPlan& plan_;
  UserPrompt& prompt_;
};

/// Generation 1: its own option dialect, jre.exe or java.exe.
class ClassicJavaVM final : public JavaVM {
 public:
  using JavaVM::JavaVM;
  UniqueHandle launch(LaunchRequest request, bool wait) override;
  UniqueHandle launchDefault(const LaunchRequest& request) override { return launch(request, false); }
};

/// Every later VM: the -X dialect; the only kind whose folder is checked.
class ModernJavaVM final : public JavaVM {
 public:
  using JavaVM::JavaVM;
  UniqueHandle launch(LaunchRequest request, bool wait) override;
  UniqueHandle launchDefault(const LaunchRequest& request) override { return launch(request, false); }
};

/// jview.exe.
class MicrosoftJavaVM final : public JavaVM {
 public:
  using JavaVM::JavaVM;
  UniqueHandle launch(LaunchRequest request, bool wait) override;
  UniqueHandle launchDefault(const LaunchRequest& request) override { return launch(request, false); }
};

/// The deleter knows the concrete class.
using JavaVmPtr = std::unique_ptr<JavaVM, void (*)(JavaVM*)>;

/// The object for the plan's VM; both arguments must outlive it.
JavaVmPtr makeJavaVm(const LaunchPlan& plan, UserPrompt& prompt);

}  // namespace ryn
