#pragma once

#include <windows.h>

#include <string>
#include <string_view>

#include "launcher/command_line.h"
#include "platform/environment.h"
#include "platform/unique_handle.h"
#include "platform/user_prompt.h"
#include "properties/property_file.h"
#include "provision/build_options.h"
#include "vmlaunch/launch_plan.h"
#include "vmsearch/system_vm_probe.h"

namespace ryn {

/// One launch: finds and loads the property file, chooses a VM, starts it and waits for it.
class Launcher {
 public:
  /// Loads the property file beside the program, makes its folder the current one and opens a console when
  /// one is asked for. `prompt` must outlive the object. Throws TerminalError when the file is missing or
  /// incomplete, FileException when it cannot be read.
  Launcher(CommandLine commandLine, UserPrompt& prompt);
  Launcher(const Launcher&) = delete;
  Launcher& operator=(const Launcher&) = delete;

  /// Chooses the VM and starts it; with `wait` returns after it has ended, else at once. Throws TerminalError
  /// when no VM can be used.
  virtual void run(bool wait);
  virtual ~Launcher() = default;

  /// True for the launcher that runs as a Windows service.
  virtual bool isService() const { return false; }
  /// True when the VM that is started next can be asked to end by the end of its standard input.
  virtual bool canAskVmToEnd() const { return false; }

  const PropertyFile& properties() const { return properties_; }
  /// The valid-VM list as the property file spells it, for the message that none was found.
  std::wstring requiredVm() const;
  /// The VM's exit code after a waiting run; 0 until one is known.
  DWORD exitCode() const { return exitCode_; }
  HINSTANCE instanceHandle() const { return instance_; }
  void setInstanceHandle(HINSTANCE instance) { instance_ = instance; }
  bool isSilent() const { return silent_; }
  void setSilent(bool silent) { silent_ = silent; }

 protected:
  const CommandLine& commandLine() const { return commandLine_; }
  /// The started VM; null when none was started.
  HANDLE vmProcess() const { return vmProcess_.get(); }

 private:
  void loadProperties();
  void openConsole();
  VmChoice chooseVm() const;
  std::wstring fetchVmPack(const VmPack& pack, std::wstring_view digestFailureText) const;
  LaunchPlan planLaunch(const VmChoice& choice) const;
  void handOver(const LaunchPlan& plan) const;

  UserPrompt& prompt_;
  CommandLine commandLine_;
  std::wstring propertiesPath_;
  /// The application's folder.
  std::wstring folder_;
  PropertyFile properties_;
  bool hasJvmspecs_ = false;
  PropertyFile jvmspecs_;
  EnvironmentMap environment_;
  std::wstring startFolder_;
  bool silent_ = false;
  HINSTANCE instance_ = nullptr;

  SystemVmProbe probe_;
  UniqueHandle vmProcess_;
  DWORD exitCode_ = 0;
};

}  // namespace ryn
