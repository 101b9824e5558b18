"""Real Windows runtimes and a Java application that looks at what it got."""
import contextlib
import json
import select
import shutil
import time
import zipfile

import pytest
import Xlib.display

from harness import LIMIT_SECONDS, ON_WINDOWS, windows_path

WM_CLOSE = 0x10
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
    result = java_app.run(r'facts "a b" ä "*.class" "C:\My Files\x" plain\x', vm=vm, env={"Probe": r"C:\ü=文"},
                          stdin=b"first\r\n\xff\x00last")
    assert (result.boxes, result.exit_code) == ([], version), result.stderr
    copied, facts = result.stdout.split(b"\nfacts: ")
    assert copied == b"first\r\n\xff\x00last" and b"on standard error" in result.stderr
    facts = json.loads(facts)
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


def width_of_window(display, title):
    """Waits for a visible window, seen on the display by a program that knows nothing of Wine. Other windows come and go
    meanwhile; one that goes while it is looked at is not the one."""
    root = display.screen().root
    root.change_attributes(event_mask=Xlib.X.SubstructureNotifyMask)
    end = time.monotonic() + LIMIT_SECONDS
    while True:
        for window in root.query_tree().children:
            with contextlib.suppress(Xlib.error.BadWindow, Xlib.error.BadDrawable):
                if window.get_wm_name() == title and window.get_attributes().map_state == Xlib.X.IsViewable:
                    return window.get_geometry().width
        assert display.pending_events() or select.select([display], [], [], end - time.monotonic())[0], f"no {title}"
        while display.pending_events():
            display.next_event()


@pytest.mark.skipif(ON_WINDOWS, reason="looks at Wine's display")
@pytest.mark.parametrize("version", [17, 25])
def test_window(host, java_app, runtime, version):
    title = f"Fenster {version}"
    with contextlib.closing(Xlib.display.Display(host.environment["DISPLAY"])) as display:
        run = java_app.start(f'window "{title}" 3', vm=runtime(version) / "bin" / "java.exe", handles=False)
        assert width_of_window(display, title) == 300
    assert run.is_running()
    host.post(title, WM_CLOSE)
    result = run.wait()
    assert (result.boxes, result.exit_code) == ([], 3)
