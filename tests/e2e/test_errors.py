"""What the user sees when a launch fails, read from the real box, and the exit code."""
import pytest

from harness import ERROR_TITLE, NO_VALID_VM, install_vm, windows_path

MISSING = "The Kestrune properties file is missing"
INVALID = "The Brivant properties file contains invalid information"
LIST = "ryn__nl__valid__vm__list"
CURRENT = "ryn__nl__current__vm"
UI = "ryn__installer__windows__ui__default"


def fail(app, text, exit_code=0, **options):
    """A run that starts no VM, shows the box with `text` and nothing else, and ends with `exit_code`."""
    result = app.run(**options)
    assert result.box.text == text
    assert (result.box.title, result.box.buttons, result.box.icon) == (ERROR_TITLE, ["OK"], True)
    assert (result.exit_code, result.records) == (exit_code, [])
    return result


@pytest.mark.parametrize("name, extension", [("hello", ".SCR"), ("no extension", "")])
def test_no_property_file(make_app, name, extension):
    fail(make_app("a.b", name=name, extension=extension), MISSING)


@pytest.mark.parametrize("properties", [
    {"ryn__class__path": None}, {"ryn__class__path": "$ENV_CLASSPATH$"},
    {"ryn__nl__java__launcher__main__class": "  "}, {LIST: None},
])
def test_incomplete_properties(app, properties):
    app.configure(**properties)
    fail(app, INVALID, vm=install_vm(app.folder / "vm"), unset=["CLASSPATH"])


@pytest.mark.parametrize("tail, properties, box, said", [
    ("", {}, True, True), ("-i console", {}, False, True), ("x SILENT", {}, False, False), ("silent x", {}, True, True),
    ("", {UI: "SILENT"}, False, False), ("x", {UI: "SILENT"}, True, True), ("", {UI: "silent"}, True, True),
])
def test_fetch_that_fails_is_told_where_the_user_looks(app, tail, properties, box, said):
    """With a console there are no windows but the error's; a silent launch says nothing at all."""
    (app.folder / "jvmspecs").mkdir()
    (app.folder / "jvmspecs" / "jvmspecs.properties").write_text(
        "build.option=withoutvm\nbuild.without.vm.search.option=12\n"
        "build.without.vm.direct.download.url=http://127.0.0.1:1/jre.vm\n")
    app.configure(**properties)
    console = "console" in tail
    result = app.run(tail, enter="exit code : 106" if console else None)
    told = "\n".join(result.console) if console else result.stdout.decode()
    assert result.exit_code == 106
    assert [other.title for other in result.boxes] == (["Network Connection Error"] if box else []) + [ERROR_TITLE]
    assert ("Downloading VM Pack - Please Wait!!!" in told) == said
    assert ("HTTP Status code: 0" in told) == (said and not box)


@pytest.mark.parametrize("properties, required, handles", [
    ({}, "ALL", False), ({LIST: "JRE_J2  MSJ"}, "JRE_J2  MSJ", True), ({LIST: None, CURRENT: r"C:\none\java.exe"}, "", True),
    ({LIST: "x" * 2001}, "x" * 2000 + "...", False),
])
def test_no_vm(app, properties, required, handles):
    app.configure(**properties)
    result = fail(app, f"{NO_VALID_VM}\n\nRequired Java VM : {required}", 106, handles=handles)
    assert (result.stdout, result.stderr) == (b"\r\nexit code : 106\r\n" if handles else b"", b"")


def test_vm_that_cannot_be_started(app):
    vm = install_vm(app.folder / "vm", names=["java"])
    result = fail(app, "Windows error 2 occured while loading the Java VM", vm=vm)
    # The log says what was tried: the last resort, in the VM's folder itself.
    assert result.logged("cmd").startswith(f'"{windows_path(app.folder / "vm" / "javaw.exe")}" -classpath ')
    vm.with_name("javaw.exe").write_bytes(b"no program")
    fail(app, "Windows error 193 occured while loading the Java VM", vm=vm)
    app.configure(ryn__user__dir="missing")
    fail(app, "Windows error 267 occured while loading the Java VM", vm=install_vm(app.folder / "good"))


def test_property_file_that_cannot_be_read(make_app):
    app = make_app("Schränke 文😀")
    app.ryn.mkdir()
    # What such an error says follows the text, here with the path of the file, in bytes that are widened.
    path = windows_path(app.ryn).replace("文", r"\u6587").replace("😀", r"\ud83d\ude00")
    fail(app, f"an unknown exception has occurrred.\ncould not open file for read: {path}")

