#pragma once

#include <windows.h>

#include <atomic>

#include "launcher/launcher.h"

namespace ryn {

/// The launcher as a Windows service of its own process: the service lives as long as the VM does. A stop or
/// shutdown control ends the VM, which is asked first when the property file gives it seconds to end by
/// itself: its standard input, then a pipe, comes to its end. A VM that ends with 0 stops the service; one
/// that ends with another code ends the process with that code and reports nothing more, so that the control
/// manager's recovery actions apply.
///
/// Three threads meet here: the dispatcher's with the control handler, service main, and the worker with the
/// run sequence. They share the VM's process handle, which one of them takes to end the service, and two
/// events.
class ServiceRYN final : public Launcher {
 public:
  /// The one instance of the process, created on the first call and never destroyed: service main and the
  /// worker may still use it when the entry returns. `prompt` must outlive `startService`. Throws what the
  /// launcher's construction throws.
  static ServiceRYN& instance(const CommandLine& commandLine, UserPrompt& prompt);

  bool isService() const override { return true; }
  bool canAskVmToEnd() const override { return static_cast<bool>(vmInput_); }

  /// Hands the process to the service control manager; returns when the service has stopped. Throws
  /// TerminalError when the manager did not start this process.
  virtual void startService();

  /// What the control manager calls. Ends the VM for a stop or shutdown, or lets service main do so where
  /// that takes time, and returns 0; any other control changes nothing and returns 120, not implemented.
  static DWORD WINAPI controlHandler(DWORD control);

 private:
  class Task;

  ServiceRYN(const CommandLine& commandLine, UserPrompt& prompt);

  static ServiceRYN& current();
  static void WINAPI serviceMainEntry(DWORD count, wchar_t** arguments);

  void serviceMain();
  void launchVm();
  void setServiceState(DWORD state, DWORD checkPoint = 0) const;
  void onStopControl();
  void askVmToEnd(HANDLE vm);
  void stop(HANDLE vm);

  UserPrompt& prompt_;
  wchar_t name_[256] = L"";
  SERVICE_STATUS_HANDLE statusHandle_ = nullptr;
  /// The VM's process from its start until somebody ends the service. The launcher owns the handle, so it
  /// stays valid for the worker's wait; whoever takes it out of here, and nobody else, ends the process and
  /// reports that the service has stopped.
  std::atomic<HANDLE> runningVm_ = nullptr;
  /// Both manual-reset. Set when the worker has done its work: the VM has ended, or there is none.
  const UniqueHandle finished_;
  /// Set when the control handler, having taken the VM, has done its part of the stop.
  const UniqueHandle stopHandled_;
  const ULONGLONG stopLimitMs_;
  /// The other end of the VM's standard input, when the VM is asked to end.
  UniqueHandle vmInput_;
  /// What the process ends with when no VM was started.
  UINT failureCode_ = 0;

  decltype(&::RegisterServiceCtrlHandlerW) registerHandler_ = nullptr;
  decltype(&::SetServiceStatus) setStatus_ = nullptr;
};

}  // namespace ryn
