"""Real Windows runtimes and a Java application that looks at what it got."""
import json
import shutil
import subprocess
import zipfile

import pytest

from harness import windows_path

VERSIONS = [11, 17, 21, 25]


@pytest.fixture
def java_app(make_app, java_classes):
    """An application whose class path has blanks and umlauts. Characters that the system's code page lacks are
    beyond these runtimes, however they are started."""
    app = make_app("Größe mit Übermaß", name="Prüfung 1")
    shutil.copytree(java_classes, app.folder / "the klässes")
    (app.folder / "lib ü").mkdir()
    with zipfile.ZipFile(app.folder / "lib ü" / "texts.jar", "w") as jar:
        jar.writestr("greeting.txt", "grüße")
    (app.folder / "datä").mkdir()
    app.configure(ryn__class__path=r"the klässes;lib ü\texts.jar", ryn__user__dir="datä",
                  ryn__nl__java__option__java__heap__size__max="64m",
                  # Wine answers a question about processor groups with less than new runtimes expect.
                  ryn__nl__java__option__additional="-XX:-PrintWarnings")
    return app


@pytest.mark.parametrize("version", VERSIONS)
def test_application_gets_what_it_needs(java_app, runtime, version):
    vm = runtime(version) / "bin" / "java.exe"
    result = java_app.run(r'facts "a b" ä "*.class" "C:\My Files\x" plain\x', vm=vm, env={"Probe": r"C:\ü=文"})
    assert (result.boxes, result.exit_code) == ([], 0), result.stderr
    facts = json.loads(result.stdout)
    folder = java_app.windows_folder()
    assert facts["java.version"].split(".")[0] == str(version)
    assert facts["arguments"][0] == f"{folder}\\Prüfung 1.ryn".replace("\\", "/")
    # Doubled backslashes are what the Java side expects.
    assert facts["arguments"][2:] == ["facts", "a b", "ä", "*.class", r"C:\\My Files\\x", r"plain\\x"]
    assert facts["user.dir"] == folder + r"\datä"
    assert facts["java.class.path"] == rf"{folder}\the klässes;{folder}\lib ü\texts.jar;"
    assert facts["resource"] == "grüße"
    assert 48 << 20 < facts["maxMemory"] <= 64 << 20
    # The options that depend on the version do what they are meant to do.
    assert facts["opened"] and facts["sun.java2d.uiScale.enabled"] == "false"
    assert facts["hebrew"] == "iw"
    assert facts["nativeAccess"] == (version == 25)
    # The temporary file is one that Java reads.
    assert facts["currentVm"] == windows_path(vm.with_name("javaw.exe"))
    assert facts["variable"] == r"C:\ü=文"
    assert facts["propertyFileExists"]


@pytest.mark.parametrize("version, code", list(zip(VERSIONS, [0, 1, 42, 255])))
def test_streams_arrive_whole(java_app, runtime, version, code):
    size = 4_000_001
    flood = (b"abcdefghijklmnopqrstuvwxyz" * (size // 26 + 1))[:size]
    result = java_app.run(f"streams {size} {code}", vm=runtime(version) / "bin" / "java.exe", stdin=b"first\r\n\xff\x00last")
    assert result.stdout == b"first\r\n\xff\x00last" + flood
    # Java 25 ends with a word on an option that goes away.
    assert flood in result.stderr
    assert (result.boxes, result.exit_code) == ([], code)


@pytest.mark.parametrize("source", ["PATH", "registry", "current VM"])
def test_vm_that_is_found(java_app, runtime, registry, source):
    home = windows_path(runtime(17))
    options = {}
    if source == "PATH":
        options["path"] = home + r"\bin"
    elif source == "registry":
        registry.add({r"SOFTWARE\JavaSoft\JRE\17.0.9": {"JavaHome": home}})
    else:
        properties = java_app.ryn.read_bytes()
        java_app.ryn.write_bytes(properties + rf"ryn.nl.current.vm={home}\bin\java.exe".encode() + b"\r\n")
    result = java_app.run("throw", **options)
    assert b"IllegalStateException: on purpose" in result.stderr
    assert (result.boxes, result.exit_code) == ([], 1)


@pytest.mark.parametrize("version", [17, 25])
def test_window(host, java_app, runtime, version):
    title = f"Fenster {version}"
    run = java_app.start(f'window "{title}" 3', vm=runtime(version) / "bin" / "java.exe", handles=False)
    # Seen on the display, by a program that knows nothing of Wine.
    search = ["xdotool", "search", "--sync", "--onlyvisible", "--limit", "1", "--name", f"^{title}$"]
    window = subprocess.run(search, env=host.environment, capture_output=True, text=True, timeout=60, check=True)
    facts = subprocess.run(["xwininfo", "-id", window.stdout.strip()], env=host.environment, capture_output=True,
                           text=True, timeout=20, check=True).stdout
    assert "Map State: IsViewable" in facts and "Width: 300" in facts
    assert run.is_running()
    host.close_window(title)
    result = run.wait()
    assert (result.boxes, result.exit_code) == ([], 3)
