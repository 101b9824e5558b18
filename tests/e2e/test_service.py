"""The launcher as a Windows service, under the service manager of the prefix."""
import re
import subprocess
import uuid

import pytest

from harness import BUILD, ERROR_TITLE, FIXTURES, NO_VALID_VM, install_stand_in, install_vm, read_records, windows_path

STOPPED, START_PENDING, STOP_PENDING, RUNNING = 1, 2, 3, 4
ACCEPT_STOP, ACCEPT_SHUTDOWN = 1, 4
PAUSE, INTERROGATE, FIRST_OWN_CONTROL = 2, 4, 128

NOT_ACCEPTED = 1052  # what the manager answers for a control that the service does not accept


@pytest.fixture
def service(host, app):
    """service(step..., tail=""): installs the application as a service, runs the driver's steps and returns its
    lines as [word, number...]. What Wine gives its event log, it tells on request on standard error."""
    def run(*steps, tail="", limit=180):
        name = f"ryn-{uuid.uuid4().hex[:8]}"
        command = f'"{windows_path(app.program)}" -tqrynservice {name} {tail}'.rstrip()
        done = subprocess.run(host.command(FIXTURES / "service_driver.exe", name, command, *steps),
                              env=host.environment | {"WINEDEBUG": "-all,err+eventlog"}, capture_output=True,
                              text=True, timeout=limit)
        assert done.returncode == 0, done.stdout
        run.errors = done.stderr
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


def test_stops_the_vm(host, app, service, vm_record):
    record = vm_record(wait="ryn-service-never")
    # Its validator holds the service where it is starting.
    (app.folder / "jvmspecs").mkdir()
    (app.folder / "jvmspecs" / "Verify.jar").touch()
    app.configure(ryn__nl__current__vm=r"vm\bin\javaw.exe", ryn__nl__valid__vm__list="our-token")
    lines = service("start", f"file={windows_path(record)}", "pending", "signal=ryn-service-never", "running",
                    f"file={windows_path(record)}", f"control={INTERROGATE}", f"control={FIRST_OWN_CONTROL}",
                    f"control={PAUSE}", "stop", "ended", "controls", tail='one "two words"')
    # The manager does not pass the handler's own answer on; what counts here is that the service runs on.
    assert lines[:5] == [["start", 0], ["running"], ["control", 0], ["control", 0], ["control", NOT_ACCEPTED]]
    assert lines[5:] == [["stop", STOPPED, STOP_PENDING], ["ended", 0], [
        "controls", STOPPED, 0, START_PENDING, 0, STOP_PENDING, 0, RUNNING, ACCEPT_STOP]]
    started = read_records(record)[-1]
    assert " -Xrs -classpath " in started["commandLine"]
    assert started["arguments"][-2:] == ["one", "two words"]
    # The event lives as long as a VM that waits for it.
    assert not host.signal("ryn-service-never", check=False)


@pytest.mark.parametrize("code", [0, 3])
def test_ends_as_the_vm_does(service, vm_record, code):
    vm_record(wait=f"ryn-service-{code}", exit=code)
    # Only a good end is reported.
    steps, lines = ([], []) if code else (["stopped"], [["stopped", 0]])
    assert service("start", "running", f"signal=ryn-service-{code}", *steps, "ended") == [
        ["start", 0], ["running"], *lines, ["ended", code]]


NO_VM = f"{ERROR_TITLE}: {NO_VALID_VM}\n\nRequired Java VM : "


def fetch(url):
    return {"option": "withoutvm", "without.vm.search.option": 12, "without.vm.direct.download.url": url}


@pytest.mark.parametrize("properties, build, code, entries", [
    (None, {}, 0, [f"{ERROR_TITLE}: The Kestrune properties file is missing"]),
    ({"ryn__nl__valid__vm__list": "MSJ"}, {}, 106, [NO_VM + "MSJ"]),
    ({"ryn__nl__current__vm": r"vm\bin\java.exe"}, {}, 0,
     [f"{ERROR_TITLE}: Windows error 2 occured while loading the Java VM"]),
    ({}, fetch("http://127.0.0.1:1/a.zip"), 106, ["The file specified is not a valid VM pack", NO_VM + "ALL"]),
    ({}, fetch("http://127.0.0.1:1/a.vm"), 106, ["Error in opening internet connection with URL\n\nWininet Error "
     "code: 12029\n\nCould not connect to the specified URL\nHTTP Status code: 0", NO_VM + "ALL"]),
])
def test_fails_into_the_event_log(app, service, properties, build, code, entries):
    install_vm(app.folder / "vm", "sun_11", names=["java"])
    if properties is None:
        app.ryn.unlink()
    else:
        app.configure(**properties)
    if build:
        (app.folder / "Windows" / "resource").mkdir(parents=True)
        (app.folder / "Windows" / "jvmspecs").mkdir()
        (app.folder / "Windows" / "jvmspecs" / "jvmspecs.properties").write_text(
            "".join(f"build.{key}={value}\n" for key, value in build.items()))
    # Without its property file it ends before it has answered the manager. In any case no box holds it.
    (_, started), *rest = service("start", "gone")
    # Wine's manager says "internal error" for one that ends before its pipe has been read.
    assert (started in ((0, 1359) if properties is not None else (1053,)), rest) == (True, [["gone", 0]]), started
    assert service("beside", "ended") == [["beside", 0], ["ended", code]]
    logged = re.findall(r'err:eventlog:ReportEventW L"(.*)"', service.errors)
    # Wine 10 shows each line on its own.
    assert "".join(logged).replace(r"\n", "\n") == "".join(entries)
    assert entries[-1] in re.sub(r".*err:eventlog:.*\n", "", service.errors)


def test_shows_a_box_to_whoever_types_the_switch(app):
    result = app.run("-tqrynservice typed")
    assert (result.exit_code, result.box.title) == (0, ERROR_TITLE)
    assert result.box.text == 'The service "typed" must be started by Windows (Windows error 1063).'


def test_leaves_nothing_behind(host, service, vm_record):
    vm_record(wait="ryn-service-rounds")
    assert service("rounds=50") == [["rounds", STOPPED, STOP_PENDING]]
    assert not host.signal("ryn-service-rounds", check=False)


@pytest.mark.parametrize("main, how, seconds, steps, noted, points", [
    ("Hooked", "end", None, ["stopped"], ["started", "hook"], 0),
    # The VM is ended at once; what the program wants to do last it does not get to do.
    ("Hooked", "stay", None, ["stop"], ["started"], 0),
    # Over too soon for its check points to be seen for certain.
    ("Hooked", "input", 50, ["stop"], ["started", "hook"], None),
    # Deaf to the end of its input: ended as above when the time is over.
    ("Hooked", "stay", 3, ["stop"], ["started"], 3),
    # As deaf, but for what reads its input in its stead.
    ("com.vantu.ryn.Start", "stay", 50, ["stop"], ["started", "hook"], None),
])
def test_shows_a_shutdown_hook_what_it_sees(app, service, runtime, java_classes, tmp_path, main, how, seconds,
                                            steps, noted, points):
    log = tmp_path / "log"
    app.configure(ryn__nl__current__vm=windows_path(runtime(17)) + r"\bin\javaw.exe",
                  ryn__class__path=f"{windows_path(BUILD / 'ryn-start.jar')};{windows_path(java_classes)}",
                  ryn__nl__java__launcher__main__class=main, ryn__start__class="Hooked",
                  ryn__service__stop__seconds=seconds)
    path = windows_path(log).replace("\\", "/")
    *_, ended, seen, controls = service("start", "running", f"file={path}", *steps, "ended", "points", "controls",
                                        tail=f"{path} {how}")
    assert (ended, log.read_text().split()) == (["ended", 0], noted)
    assert points is None or (seen[1] >= points and (seen[1] > 0) == (points > 0))
    assert controls[-2:] == [RUNNING, ACCEPT_STOP if seconds is None else ACCEPT_STOP | ACCEPT_SHUTDOWN]


@pytest.mark.parametrize("job", [None, "true"])
def test_launcher_that_is_killed(app, service, vm_record, tmp_path, job):
    record = windows_path(tmp_path / "child-record")
    child = install_stand_in(app.folder / "child" / "child.exe", wait="ryn-service-child", record=record)
    vm_record(wait="ryn-service-orphan", start=windows_path(child))
    app.configure(ryn__nl__current__vm=r"vm\bin\javaw.exe", ryn__win32__job=job)
    # What the VM has started stays in any case.
    service("start", "running", f"file={record}", "kill",
            ("vanish" if job else "signal") + "=ryn-service-orphan", "signal=ryn-service-child")
