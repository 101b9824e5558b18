"""ryn.exe on the machine that Wine is: what it tells of a launch, and that its record tells the same elsewhere."""
import getpass
import json
import re
import shutil
import subprocess

import pytest

import harness
from harness import RYN, install_vm, wait_until, windows_path

WINDOWS_RYN = harness.BUILD / "ryn" / "ryn.exe"
WM_CLOSE = 16


@pytest.fixture
def explain(app, host):
    def run(*arguments, program=None, code=0, **environment):
        command = [program] if program else host.command(WINDOWS_RYN)
        done = subprocess.run([*command, "explain", *map(str, arguments)], env=host.environment | environment,
                              cwd=app.folder, capture_output=True, timeout=120)
        assert done.returncode == code, done.stderr
        return done.stdout.decode()
    return run


def test_a_record_tells_on_any_system_what_the_machine_told(app, host, registry, explain, tmp_path, request):
    base = app.folder.parent
    install_vm(base / "größe", "sun_25", compiler=True)
    user = getpass.getuser()
    own = host.prefix / "drive_c" / "users" / user / "jdk-11"
    request.addfinalizer(lambda: shutil.rmtree(own))
    install_vm(own, "sun_11")
    registry.add({"SOFTWARE\\JavaSoft\\JDK\\25": {"JavaHome": windows_path(base / "größe")},
                  "SOFTWARE\\JavaSoft\\JDK\\21": {"JavaHome": windows_path(base / "gone")}})
    app.configure(**{"ryn.user.options": "%USERPROFILE%/none.txt"})
    path = f"C:\\users\\{user}\\jdk-11\\bin"
    variables = {"WINEPATH": path, "JAVA_HOME": windows_path(base / "größe")}
    live = explain(app.program, "--json", "--all", "--", "a b", **variables)
    report = json.loads(live)
    assert [(entry["where"], entry["kind"], entry["version"], entry["bits"], entry["outcome"])
            for entry in report["considered"]][:3] == [
        ("\\HKEY_LOCAL_MACHINE\\SOFTWARE\\JavaSoft\\JDK\\21", "JDK", [21, 0, 0], None, "noUsableHome"),
        ("\\HKEY_LOCAL_MACHINE\\SOFTWARE\\JavaSoft\\JDK\\25", "JDK", [25, 0, 0], 64, "chosen"),
        (path, "JRE", [11, 0, 2], 64, "outranked")]
    assert report["program"] == windows_path(base / "größe" / "bin" / "javaw.exe")
    assert report["application"]["launcher"]["signature"] == "none"
    # A launch does what was told, but for the name of its temporary file.
    launch = app.run('"a b"')
    assert launch.record["arguments"] == [launch.temp_path if word.endswith("/ryn0.tmp") else word
                                          for word in report["commandLine"][1:]]

    record = tmp_path / "machine.json"
    saved = explain(app.program, "--json", "--all", "--save", record, "--", "a b", **variables)
    hidden = re.sub(rf"C:(/|\\\\)users\1{user}", r"C:\1Users\1user", live)
    assert saved == hidden and f"\\\\{user}" not in record.read_text()
    for program in None, RYN:
        assert explain(app.folder, "--json", "--all", "--machine", record, program=program) == saved


def test_a_machine_without_java(app, explain):
    app.configure(**{"ryn.nl.valid.vm.list": "17+"})
    assert "exit code 106" in explain(app.program, code=1)


def test_a_double_click_writes_the_report_to_the_desktop(app, host, request, tmp_path):
    def move_desktop(folder):
        key = r"HKCU\Software\Microsoft\Windows\CurrentVersion\Explorer\User Shell Folders"
        host.wine("reg", "add", key, "/v", "Desktop", "/t", "REG_EXPAND_SZ", "/d", folder, "/f")

    request.addfinalizer(lambda: move_desktop(r"%USERPROFILE%\Desktop"))
    move_desktop(windows_path(tmp_path))
    program = windows_path(shutil.copyfile(WINDOWS_RYN, app.folder / "support.exe"))
    clicked = subprocess.Popen(host.command("start", "/wait", program), env=host.environment, stdin=subprocess.DEVNULL,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    report = tmp_path / "hello-report.txt"
    wait_until(report.exists, "the report")
    text = report.read_bytes().decode("utf-8-sig")
    assert "exit code 106" in text and text.count("\n") == text.count("\r\n")
    assert clicked.poll() is None
    host.post(program, WM_CLOSE)
    assert clicked.wait(harness.LIMIT_SECONDS) is not None
