"""The console that the launcher opens when it is asked to."""
import pytest

from harness import install_vm

PAUSE = "ryn__win32__console__pause"
TITLE = "ryn__application__name"
PROMPT = "[press enter to close this window]"


def console_lines(result):
    """What the temporary file says about a console."""
    return [line for line in result.temp_lines if "redirect" in line or "control-key" in line]


@pytest.mark.parametrize("tail, properties, title, handles", [
    ("-i console x", {TITLE: "Größe 文"}, "Größe 文", False),
    ("-i console x", {TITLE: "x" * 5000}, "x" * 4096, False),
    ("x", {"ryn__stdout__redirect": "Console"}, "Kestrune", True),
    ("x", {"ryn__stderr__redirect": "CONSOLE", "ryn__stdout__redirect": "file.txt"}, "Kestrune", False),
])
def test_console_is_opened(app, tail, properties, title, handles):
    app.configure(**{PAUSE: "On"} | properties)
    result = app.run(tail, vm=install_vm(app.folder / "Größe文"), handles=handles, enter=PROMPT,
                     env={"STAND_IN_TEXT": "said by the VM", "STAND_IN_EXIT": 9})
    record = result.record
    assert (result.exit_code, result.boxes) == (9, [])
    assert record["console"] == title
    assert record["program"].endswith("\\java.exe")
    # Everything is in the console and nowhere else, also when the launcher's own output was redirected.
    for name in ("stdin", "stdout", "stderr"):
        assert record[name] == "console", name
    assert [line[:5] for line in result.console[:2]] == ["cwd: ", "cmd: "]
    assert r"\Größe文\bin\java.exe" in "".join(result.console)
    assert result.console[-1].startswith("said by the VM" + PROMPT)
    assert result.held and (result.stdout, result.stderr) == (b"", b"")
    assert result.arguments == tail.split()
    assert console_lines(result) == []


def test_ctrl_c_ends_the_vm_alone(app):
    app.configure(**{PAUSE: "on"})
    result = app.run("-i console", vm=install_vm(app.folder / "vm"), interrupt="VM at work", enter=PROMPT,
                     env={"STAND_IN_TEXT": "VM at work", "STAND_IN_WAIT": "never set", "STAND_IN_EXIT": 9}, limit=30)
    # An interrupted program ends with 0 in Wine.
    assert result.exit_code in (0, 0xC000013A)
    assert result.console[-1].startswith("VM at work" + PROMPT)


@pytest.mark.parametrize("tail, properties", [
    ("-i Console x", {PAUSE: "true"}), ("x console", {"ryn__stdout__redirect": "console.log", "ryn__stderr__redirect": "", PAUSE: "yes"}),
])
def test_no_console(app, tail, properties):
    app.configure(**properties)
    result = app.run(tail, vm=install_vm(app.folder / "vm"))
    assert "console" not in result.record
    assert (result.boxes, result.stdout) == ([], b"")


def test_control_key_opens_a_console_and_holds_it(app):
    result = app.run(vm=install_vm(app.folder / "vm"), control=True, enter=PROMPT, env={"STAND_IN_EXIT": 4})
    assert "console" in result.record
    assert result.temp_lines[:3] == ["ryn.control-key=true", "ryn.stderr.redirect=console", "ryn.stdout.redirect=console"]
    assert PROMPT in result.console
    assert (result.exit_code, result.boxes) == (4, [])


def test_no_pause_unless_it_is_asked_for(app):
    app.configure(**{PAUSE: "1"})
    result = app.run("-i console", vm=install_vm(app.folder / "vm"), enter=PROMPT, env={"STAND_IN_EXIT": 4})
    assert result.exit_code == 4
    assert PROMPT not in result.console


def test_no_vm_is_said_on_the_console(app):
    result = app.run("-i console", enter="exit code : 106", limit=30)
    assert result.exit_code == 106
    assert result.console[0].startswith("Kestrune Error: Could not find a valid Java virtual machine")
    assert "exit code : 106" in result.console
    assert result.box.text.endswith("Required Java VM : ALL")
