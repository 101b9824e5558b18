"""The launcher as a Windows service, under the service manager of the prefix."""
import json
import subprocess
import uuid

import pytest

from harness import FIXTURES, install_vm, windows_path

STOPPED, STOP_PENDING = 1, 3
PAUSE, INTERROGATE, FIRST_OWN_CONTROL = 2, 4, 128

NOT_ACCEPTED = 1052  # what the manager answers for a control that the service does not accept


@pytest.fixture
def service(host, app):
    """service(step..., tail=""): installs the application as a service, runs the driver's steps and returns its
    lines as [word, number...]."""
    def run(*steps, tail="", limit=180):
        name = f"ryn-{uuid.uuid4().hex[:8]}"
        command = f'"{windows_path(app.program)}" -tqrynservice {name} {tail}'.rstrip()
        done = subprocess.run(["wine", FIXTURES / "service_driver.exe", name, command, *steps],
                              env=host.environment, capture_output=True, text=True, timeout=limit)
        assert done.returncode == 0, done.stdout
        return [[word, *map(int, numbers)] for word, *numbers in map(str.split, done.stdout.splitlines())]
    return run


@pytest.fixture
def vm_record(app, tmp_path):
    """Installs a stand-in VM, whose environment is the service manager's; returns the file that it records in."""
    def install(**settings):
        record = tmp_path / "record"
        install_vm(app.folder / "vm", "sun_11", record=windows_path(record), **settings)
        app.configure(ryn__nl__current__vm=r"vm\bin\javaw.exe")
        return record
    return install


def running_programs(host):
    done = subprocess.run(["wine", "tasklist"], env=host.environment, capture_output=True, text=True, timeout=60)
    return done.stdout.lower()


def test_stops_the_vm(host, app, service, vm_record):
    record = vm_record(wait="ryn-service-never")
    lines = service("start", "running", f"file={windows_path(record)}", f"control={INTERROGATE}",
                    f"control={FIRST_OWN_CONTROL}", f"control={PAUSE}", "stop", "ended", tail='one "two words"')
    # The manager does not pass the handler's own answer on; what counts here is that the service runs on.
    assert lines[:5] == [["start", 0], ["running"], ["control", 0], ["control", 0], ["control", NOT_ACCEPTED]]
    assert lines[5:] == [["stop", STOPPED, STOP_PENDING], ["ended", 0]]
    started = json.loads(record.read_text("ascii"))
    assert " -Xrs -classpath " in started["commandLine"]
    assert started["arguments"][-2:] == ["one", "two words"]
    assert not {"hello.exe", "javaw.exe"} & set(running_programs(host).replace(",", " ").replace('"', " ").split())


@pytest.mark.parametrize("code", [0, 3])
def test_ends_as_the_vm_does(service, vm_record, code):
    vm_record(wait=f"ryn-service-{code}", exit=code)
    assert service("start", "running", f"signal=ryn-service-{code}", "ended") == [
        ["start", 0], ["running"], ["ended", code]]


@pytest.mark.parametrize("fault", ["no property file", "no VM", "no executable"])
def test_fails_without_a_box(app, service, fault):
    if fault == "no VM":
        app.configure(ryn__nl__valid__vm__list="MSJ")
    elif fault == "no executable":
        install_vm(app.folder / "vm", "sun_11", names=["java"])
        app.configure(ryn__nl__current__vm=r"vm\bin\java.exe")
    else:
        app.ryn.unlink()
    # Without its property file it ends before it has answered the manager.
    assert service("start", "gone") == [["start", 1053 if fault == "no property file" else 0], ["gone", 0]]


def test_leaves_nothing_behind(host, service, vm_record):
    vm_record(wait="ryn-service-rounds")
    before = running_programs(host).count("\n")
    assert service("rounds=50") == [["rounds", STOPPED, STOP_PENDING]]
    assert running_programs(host).count("\n") == before


@pytest.mark.parametrize("how, steps, noted", [
    ("end", ["stopped"], ["started", "hook"]),
    # The VM is ended at once; what the program wants to do last it does not get to do.
    ("stay", ["stop"], ["started"]),
])
def test_shows_a_shutdown_hook_what_it_sees(app, service, runtime, java_classes, tmp_path, how, steps, noted):
    log = tmp_path / "log"
    app.configure(ryn__nl__current__vm=windows_path(runtime(17)) + r"\bin\javaw.exe",
                  ryn__class__path=windows_path(java_classes), ryn__nl__java__launcher__main__class="Hooked")
    path = windows_path(log).replace("\\", "/")
    assert service("start", "running", f"file={path}", *steps, "ended", tail=f"{path} {how}")[-1] == ["ended", 0]
    assert log.read_text().split() == noted
