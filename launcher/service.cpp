#include "launcher/service.h"

#include <algorithm>
#include <memory>

#include "launcher/error_report.h"
#include "platform/errors.h"
#include "platform/system_library.h"
#include "platform/text.h"
#include "properties/keys.h"

namespace ryn {
namespace {

constexpr DWORD kWaitHintMs = 5000;
/// How long the end of a VM is waited for once it has been ended from outside.
constexpr DWORD kEndLimitMs = 5000;

/// How often a service that is asked to end shows that it is still at it; well within the wait hint.
constexpr DWORD kCheckPointMs = 1000;

ServiceRYN* theInstance = nullptr;

HANDLE createEvent() {
  return CreateEventW(nullptr, TRUE, FALSE, nullptr);
}

// Whoever is at the screen may leave; the service goes on.
BOOL WINAPI ignoreLogOff(DWORD event) {
  return event == CTRL_LOGOFF_EVENT;
}

/// Puts a handle in the place of the process's standard input, from where a child inherits it.
class StandardInput {
 public:
  explicit StandardInput(HANDLE handle) : old_(GetStdHandle(STD_INPUT_HANDLE)) {
    SetHandleInformation(handle, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    SetStdHandle(STD_INPUT_HANDLE, handle);
  }
  StandardInput(const StandardInput&) = delete;
  StandardInput& operator=(const StandardInput&) = delete;
  ~StandardInput() { SetStdHandle(STD_INPUT_HANDLE, old_); }

 private:
  HANDLE old_;
};

}  // namespace

/// The worker thread's body and what it needs.
class ServiceRYN::Task final {
 public:
  Task(HANDLE finished, ServiceRYN& service) : finished_(finished), service_(service) {}

  /// Runs the launch and stays until the VM has ended.
  virtual void serviceWorker() {
    try {
      service_.launchVm();
    } catch (const std::exception& error) {
      // Nothing may leave a thread's body; the process ends with what the entry would have returned.
      service_.failureCode_ = static_cast<UINT>(reportError(error, service_.requiredVm(), service_.prompt_));
    }
    if (const HANDLE vm = service_.vmProcess()) {
      service_.runningVm_ = vm;
      service_.setServiceState(SERVICE_RUNNING);
      WaitForSingleObject(vm, INFINITE);
    }
    SetEvent(finished_);
  }

  static DWORD WINAPI threadBody(void* task) {
    const std::unique_ptr<Task> owned(static_cast<Task*>(task));
    owned->serviceWorker();
    return 0;
  }

 private:
  HANDLE finished_;
  ServiceRYN& service_;
};

ServiceRYN::ServiceRYN(const CommandLine& commandLine, UserPrompt& prompt)
    : Launcher(commandLine, prompt),
      prompt_(prompt),
      finished_(createEvent()),
      stopHandled_(createEvent()),
      stopLimitMs_(ULONGLONG{1000} * serviceStopSeconds(properties())) {
  commandLine.serviceName.copy(name_, std::size(name_) - 1);
}

ServiceRYN& ServiceRYN::instance(const CommandLine& commandLine, UserPrompt& prompt) {
  if (theInstance == nullptr) theInstance = new ServiceRYN(commandLine, prompt);
  return *theInstance;
}

ServiceRYN& ServiceRYN::current() {
  if (theInstance == nullptr) throw TerminalError(L"ServiceRYN has not been instantiated.");
  return *theInstance;
}

void ServiceRYN::startService() {
  const UniqueModule library = loadLibraryFrom(systemFolderForProcess(), L"advapi32.dll");
  const RYN_FUNCTION(StartServiceCtrlDispatcherW) startDispatcher(library.get());
  registerHandler_ = RYN_FUNCTION(RegisterServiceCtrlHandlerW)(library.get());
  setStatus_ = RYN_FUNCTION(SetServiceStatus)(library.get());
  if (startDispatcher == nullptr || registerHandler_ == nullptr || setStatus_ == nullptr) {
    throw TerminalError(L"Windows offers no service control.");
  }
  SERVICE_TABLE_ENTRYW table[] = {{name_, &serviceMainEntry}, {nullptr, nullptr}};
  if (startDispatcher(table)) return;
  const DWORD error = GetLastError();
  throw TerminalError(concat(
      {L"The service \"", name_, L"\" must be started by Windows (Windows error ", decimal(error), L")."}));
}

void WINAPI ServiceRYN::serviceMainEntry(DWORD /*count*/, wchar_t** /*arguments*/) {
  current().serviceMain();
}

void ServiceRYN::serviceMain() {
  SetConsoleCtrlHandler(ignoreLogOff, TRUE);

  SetLastError(ERROR_SUCCESS);
  // Declared without a result, the handler's answer is passed on where the control manager listens to it.
  statusHandle_ = registerHandler_(
      name_, reinterpret_cast<LPHANDLER_FUNCTION>(reinterpret_cast<void (*)()>(&controlHandler)));
  setServiceState(SERVICE_START_PENDING);

  auto task = std::make_unique<Task>(finished_.get(), *this);
  const UniqueHandle worker(CreateThread(nullptr, 0, &Task::threadBody, task.get(), 0, nullptr));
  if (worker) {
    // The thread's own from here on: it may outlive this one.
    static_cast<void>(task.release());
    const HANDLE ends[] = {finished_.get(), stopHandled_.get()};
    WaitForMultipleObjects(static_cast<DWORD>(std::size(ends)), ends, FALSE, INFINITE);
  }

  if (vmProcess() == nullptr) {
    // Nothing was started, and no stop is reported. The dispatcher would wait for one for ever, so the
    // process ends here; the control manager takes that for what it is, a failed start.
    ExitProcess(failureCode_);
  }
  const HANDLE vm = runningVm_.exchange(nullptr);
  if (vm == nullptr) {
    // The control handler has taken it. When this thread returns, so may the dispatcher, and the entry with
    // it: not before the handler has reported.
    WaitForSingleObject(stopHandled_.get(), 2 * kEndLimitMs);
    if (vmInput_) {
      askVmToEnd(vmProcess());
      stop(vmProcess());
    }
    return;
  }
  DWORD exitCode = 0;
  GetExitCodeProcess(vm, &exitCode);
  if (exitCode == 0) {
    setServiceState(SERVICE_STOP_PENDING);
    stop(vm);
  }
  ExitProcess(exitCode);
}

DWORD WINAPI ServiceRYN::controlHandler(DWORD control) {
  if (control != SERVICE_CONTROL_STOP && control != SERVICE_CONTROL_SHUTDOWN)
    return ERROR_CALL_NOT_IMPLEMENTED;
  current().onStopControl();
  return NO_ERROR;
}

void ServiceRYN::launchVm() {
  UniqueHandle readEnd;
  if (stopLimitMs_ == 0 || !CreatePipe(readEnd.receive(), vmInput_.receive(), nullptr, 0)) return run(false);
  const StandardInput input(readEnd.get());
  run(false);
}

void ServiceRYN::onStopControl() {
  const HANDLE vm = runningVm_.exchange(nullptr);
  if (vm == nullptr) return;
  if (vmInput_) {
    // A handler has to return soon, so service main goes on from here.
    setServiceState(SERVICE_STOP_PENDING, 1);
  } else {
    setServiceState(SERVICE_STOP_PENDING);
    stop(vm);
  }
  SetEvent(stopHandled_.get());
}

void ServiceRYN::askVmToEnd(HANDLE vm) {
  vmInput_.reset();
  const ULONGLONG end = GetTickCount64() + stopLimitMs_;
  DWORD checkPoint = 1;
  for (ULONGLONG now = GetTickCount64(); now < end; now = GetTickCount64()) {
    const auto pause = static_cast<DWORD>(std::min<ULONGLONG>(kCheckPointMs, end - now));
    if (WaitForSingleObject(vm, pause) != WAIT_TIMEOUT) return;
    setServiceState(SERVICE_STOP_PENDING, ++checkPoint);
  }
}

void ServiceRYN::setServiceState(DWORD state, DWORD checkPoint) const {
  SERVICE_STATUS status = {};
  status.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
  status.dwCurrentState = state;
  if (state == SERVICE_RUNNING) {
    // A VM that is ended in no time needs no word of a shutdown.
    status.dwControlsAccepted = SERVICE_ACCEPT_STOP | (stopLimitMs_ > 0 ? SERVICE_ACCEPT_SHUTDOWN : 0);
  }
  status.dwWin32ExitCode = NO_ERROR;
  status.dwCheckPoint = checkPoint;
  status.dwWaitHint = kWaitHintMs;
  setStatus_(statusHandle_, &status);
}

void ServiceRYN::stop(HANDLE vm) {
  TerminateProcess(vm, 0);
  // Ending is only begun by then; whoever waits for the service to stop wants the VM's files.
  WaitForSingleObject(vm, kEndLimitMs);
  setServiceState(SERVICE_STOPPED);
}

}  // namespace ryn
