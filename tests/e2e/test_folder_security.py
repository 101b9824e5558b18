"""The check of the VM's folder: what ordinary users can write is not started with an administrator's rights.

The test user owns the folders and is an administrator to Wine. Two stand-in libraries make an ordinary user of
it: one knows its local groups, the other works the rights out that Wine derives from the folder's mode.
"""
import contextlib
import shutil

import pytest

from harness import LAUNCHER, image_bits, install_stand_in, install_vm, own_fixtures, windows_path

TITLE = "Security Error"
TEXT = ("The JVM used for this installer seems to have been installed in a unsecured location (non-admin user folder). "
        "Installer would now exit. Please reach out to your vendor for more details.")
SWITCH = "ryn__nl__designer__jvm__securefolder__check"


@pytest.fixture(scope="module")
def stand_in_libraries(host):
    """Puts the stand-ins into the system folder; only programs that are told so load them instead of Wine's own."""
    with contextlib.ExitStack() as stack:
        for name in ("authz", "netapi32"):
            library = host.system_folder(image_bits(LAUNCHER)) / f"{name}.dll"
            kept = library.with_suffix(".kept")
            if not kept.exists():  # else an earlier run was cut short
                library.rename(kept)
            stack.callback(kept.replace, library)
            shutil.copyfile(own_fixtures() / f"fake_{name}.dll", library)
        yield {"WINEDLLOVERRIDES": host.environment["WINEDLLOVERRIDES"] + ";authz,netapi32=n"}


@pytest.fixture
def run(app, stand_in_libraries):
    def run(switch, groups, vm, **options):
        app.configure(**{SWITCH: switch})
        return app.run(vm=vm, env={"RYN_TEST_GROUPS": groups}, host_environment=stand_in_libraries, **options)
    return run


def test_refuses_what_users_can_write(app, run):
    vm = install_vm(app.folder.parent / "vm", "sun_8")
    result = run("true", "Guests;Users", vm)
    assert result.records == []
    assert (result.box.title, result.box.text, result.box.buttons) == (TITLE, TEXT, ["OK"])
    assert result.exit_code == 0
    assert result.stdout.decode("cp1252") == (
        f"\r\nSecurity Error! The JVM {windows_path(vm)}" + TEXT.removeprefix("The JVM") + "\r\n")


def test_search_passes_over_what_users_can_write(app, run):
    unsafe, safe = (install_vm(app.folder.parent / name, name) for name in ("sun_11", "sun_8"))
    safe.parent.chmod(0o555)
    path = ";".join(windows_path(vm.parent) for vm in (unsafe, safe))
    for switch, expected in (("true", safe), ("TRUE", unsafe)):
        assert run(switch, "Users", None, path=path).record["program"] == windows_path(expected)


@pytest.mark.parametrize("switch, groups, mode", [
    (None, "Users", 0o755),
    ("TRUE", "Users", 0o755),
    ("true", "Users;Administrators", 0o755),
    ("true", "Guests", 0o755),
    ("true", "Users", 0o555),
])
def test_starts_the_rest(app, run, switch, groups, mode):
    vm = install_vm(app.folder.parent / "vm", "sun_8")
    vm.parent.chmod(mode)
    result = run(switch, groups, vm)
    assert (result.boxes, result.record["program"]) == ([], windows_path(vm))


def test_starts_a_microsoft_vm(app, run):
    vm = install_stand_in(app.folder.parent / "ms" / "wjview.exe", "jview")
    install_stand_in(vm.with_name("jview.exe"), "jview")
    assert run("true", "Users", vm).record["program"] == windows_path(vm)


def test_starts_what_cannot_be_checked(app):
    # Wine's own library always fails.
    vm = install_vm(app.folder.parent / "vm", "sun_8")
    app.configure(**{SWITCH: "true"})
    assert app.run(vm=vm).record["program"] == windows_path(vm)
