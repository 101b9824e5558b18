"""What the user sees when a launch fails, read from the real box, and the exit code."""
import pytest

from harness import ERROR_TITLE, NO_VALID_VM, install_vm, windows_path

MISSING = "The Kestrune properties file is missing"
INVALID = "The Brivant properties file contains invalid information"
LIST = "ryn__nl__valid__vm__list"
CURRENT = "ryn__nl__current__vm"


def fail(app, text, exit_code=0, **options):
    """A run that starts no VM, shows the box with `text` and nothing else, and ends with `exit_code`."""
    result = app.run(**options)
    assert result.box.text == text
    assert (result.box.title, result.box.buttons, result.box.icon) == (ERROR_TITLE, ["OK"], True)
    assert (result.exit_code, result.records) == (exit_code, [])
    return result


@pytest.mark.parametrize("name, extension", [("hello", ".exe"), ("hello", ".SCR"), ("no extension", "")])
def test_no_property_file(make_app, name, extension):
    fail(make_app(name=name, extension=extension), MISSING)


@pytest.mark.parametrize("properties", [
    {"ryn__class__path": None}, {"ryn__class__path": ""}, {"ryn__class__path": "$ENV_CLASSPATH$"},
    {"ryn__nl__java__launcher__main__class": None}, {"ryn__nl__java__launcher__main__class": "  "}, {LIST: None},
])
def test_incomplete_properties(app, properties):
    app.configure(**properties)
    fail(app, INVALID, vm=install_vm(app.folder / "vm"), unset=["CLASSPATH"])


@pytest.mark.parametrize("properties, required", [
    ({}, "ALL"), ({LIST: "JRE_J2  MSJ"}, "JRE_J2  MSJ"), ({LIST: None, CURRENT: r"C:\none\java.exe"}, ""),
])
def test_no_vm(app, properties, required):
    app.configure(**properties)
    result = fail(app, f"{NO_VALID_VM}\n\nRequired Java VM : {required}", 106)
    assert (result.stdout, result.stderr) == (b"\r\nexit code : 106\r\n", b"")


def test_no_vm_without_standard_handles(app):
    fail(app, f"{NO_VALID_VM}\n\nRequired Java VM : ALL", 106, handles=False)


def test_vm_that_cannot_be_started(app):
    vm = install_vm(app.folder / "vm", names=["java"])
    result = fail(app, "Windows error 2 occured while loading the Java VM", vm=vm)
    # The log says what was tried: the last resort, in the VM's folder itself.
    assert result.logged("cmd").startswith(f'"{windows_path(app.folder / "vm" / "javaw.exe")}" -classpath ')
    vm.with_name("javaw.exe").write_bytes(b"no program")
    fail(app, "Windows error 193 occured while loading the Java VM", vm=vm)


def test_property_file_that_cannot_be_read(make_app):
    app = make_app("Schränke")
    app.ryn.mkdir()
    # What such an error says follows the text, here with the path of the file.
    result = app.run()
    text = result.box.text
    assert text.startswith("an unknown exception has occurrred.\n" + "could not open file for read"), text
    assert windows_path(app.ryn) in text
    assert (result.box.title, result.exit_code) == (ERROR_TITLE, 0)
