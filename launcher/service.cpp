#include "launcher/service.h"

#include <memory>

#include "launcher/error_report.h"
#include "platform/errors.h"
#include "platform/system_library.h"
#include "platform/text.h"

namespace ryn {
namespace {

constexpr DWORD kWaitHintMs = 5000;

std::unique_ptr<ServiceRYN>& instanceSlot() {
  static std::unique_ptr<ServiceRYN> slot;
  return slot;
}

// Whoever is at the screen may leave; the service goes on.
BOOL WINAPI ignoreLogOff(DWORD event) {
  return event == CTRL_LOGOFF_EVENT;
}

}  // namespace

/// The worker thread's body and what it needs.
class ServiceRYN::Task final {
 public:
  Task(HANDLE finished, ServiceRYN& service) : finished_(finished), service_(service) {}

  /// Runs the launch and stays until the VM has ended.
  virtual void serviceWorker() {
    try {
      service_.run(false);
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
    static_cast<Task*>(task)->serviceWorker();
    return 0;
  }

 private:
  HANDLE finished_;
  ServiceRYN& service_;
};

ServiceRYN::ServiceRYN(const CommandLine& commandLine, UserPrompt& prompt)
    : Launcher(commandLine, prompt), prompt_(prompt) {
  commandLine.serviceName.copy(name_, std::size(name_) - 1);
}

ServiceRYN& ServiceRYN::instance(const CommandLine& commandLine, UserPrompt& prompt) {
  std::unique_ptr<ServiceRYN>& slot = instanceSlot();
  if (!slot) slot.reset(new ServiceRYN(commandLine, prompt));
  return *slot;
}

ServiceRYN& ServiceRYN::current() {
  if (!instanceSlot()) throw TerminalError(L"ServiceRYN has not been instantiated.");
  return *instanceSlot();
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

  status_ = {};
  status_.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
  status_.dwWaitHint = kWaitHintMs;
  SetLastError(ERROR_SUCCESS);
  // Declared without a result, the handler's answer is passed on where the control manager listens to it.
  statusHandle_ = registerHandler_(
      name_, reinterpret_cast<LPHANDLER_FUNCTION>(reinterpret_cast<void (*)()>(&controlHandler)));
  setServiceState(SERVICE_START_PENDING);

  const UniqueHandle finished(CreateEventW(nullptr, TRUE, FALSE, nullptr));
  Task task(finished.get(), *this);
  const UniqueHandle worker(CreateThread(nullptr, 0, &Task::threadBody, &task, 0, nullptr));
  if (worker) WaitForSingleObject(finished.get(), INFINITE);

  if (vmProcess() == nullptr) {
    // Nothing was started, and no stop is reported. The dispatcher would wait for one for ever, so the
    // process ends here; the control manager takes that for what it is, a failed start.
    ExitProcess(failureCode_);
  }
  // Somebody has stopped the service: the dispatcher returns, and the entry with it.
  if (runningVm_ == nullptr) return;

  DWORD exitCode = 0;
  GetExitCodeProcess(vmProcess(), &exitCode);
  if (exitCode == 0) stop();
  ExitProcess(exitCode);
}

DWORD WINAPI ServiceRYN::controlHandler(DWORD control) {
  if (control != SERVICE_CONTROL_STOP && control != SERVICE_CONTROL_SHUTDOWN)
    return ERROR_CALL_NOT_IMPLEMENTED;
  current().stop();
  return NO_ERROR;
}

void ServiceRYN::setServiceState(DWORD state) {
  status_.dwCurrentState = state;
  status_.dwControlsAccepted = state == SERVICE_RUNNING ? SERVICE_ACCEPT_STOP : 0;
  setStatus_(statusHandle_, &status_);
}

void ServiceRYN::stop() {
  setServiceState(SERVICE_STOP_PENDING);
  if (const HANDLE vm = runningVm_.exchange(nullptr)) TerminateProcess(vm, 0);
  status_.dwWin32ExitCode = NO_ERROR;
  status_.dwServiceSpecificExitCode = 0;
  setServiceState(SERVICE_STOPPED);
}

}  // namespace ryn
