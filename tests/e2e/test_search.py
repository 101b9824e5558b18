"""Which of several VMs is taken. What the keywords of the list mean and how a version is read from a VM's folder are
tables of the unit tests."""
import shutil

import pytest

from harness import SYSTEM_PATH, install_stand_in, install_vm, windows_path

JAVASOFT = "SOFTWARE\\JavaSoft\\"
IBM = "SOFTWARE\\IBM\\"
LIST = "ryn__nl__valid__vm__list"
HIGH = "ryn__nl__jvm__high"
PLATFORM = "ryn__nl__win32__java__launcher__platform"
CURRENT = "ryn__nl__current__vm"


class Search:
    """An application and VMs, known by the names of their folders."""

    def __init__(self, app, registry):
        self.app, self.registry = app, registry
        self.base = app.folder.parent

    def home(self, name):
        return windows_path(self.base / name)

    def register(self, minor=None, **keys):
        """VMs by the names of their folders under the keys of that version."""
        for name in keys:
            install_vm(self.base / name)
        more = {} if minor is None else {"MicroVersion": minor}
        self.registry.add({key: {"JavaHome": self.home(name)} | more for name, key in keys.items()})

    def path(self, *names):
        return ";".join([SYSTEM_PATH, *(self.home(name) + "\\bin" for name in names)])

    def chosen(self, path=SYSTEM_PATH, **properties):
        """The folder of the VM that ran, or None when the launcher found none."""
        self.app.configure(**properties)
        result = self.app.run(path=path)
        if result.exit_code == 106:
            assert result.records == [] and len(result.boxes) == 1
            return None
        assert result.boxes == []
        return result.record["program"].removeprefix(self.home("") + "\\").removesuffix("\\bin\\javaw.exe")


@pytest.fixture
def search(app, registry):
    return Search(app, registry)


@pytest.mark.parametrize("key, kind", [
    (JAVASOFT + "JDK", "JDK"), (JAVASOFT + "JRE", "JRE"),
    (JAVASOFT + "Java Development Kit", "JDK"), (JAVASOFT + "Java Runtime Environment", "JRE"),
    # The wrong way round, and meant so.
    (IBM + "Java2 Runtime Environment", "JDK"), (IBM + "Java Development Kit", "JRE"),
])
def test_registry_keys(search, key, kind):
    search.register(vm=key + "\\1.8.0_20", minor="0")
    assert search.chosen(**{LIST: kind}) == "vm"


def test_highest_registered_version(search):
    search.register(nine=JAVASOFT + "JDK\\9.0.4", twentyfour=JAVASOFT + "JDK\\24", gone=JAVASOFT + "JDK\\25.0.2",
                    eight=JAVASOFT + "JRE\\1.8.0")
    search.register(seven=JAVASOFT + "JRE\\1.7.0_80", six=JAVASOFT + "JRE\\1.6.0_99", minor="0")
    # Passed over: the folder is gone; the minor number, which old versions need, is missing.
    shutil.rmtree(search.base / "gone")
    assert search.chosen() == "twentyfour"
    assert search.chosen(**{LIST: "JRE"}) == "seven"
    # Not the highest but the first acceptable one; keys are listed in the order of their names.
    assert search.chosen(**{LIST: "JRE", HIGH: "0"}) == "six"


def test_path_and_registry(search):
    install_vm(search.base / "eight", "sun_8")
    install_vm(search.base / "eleven", "sun_11")
    install_vm(search.base / "seventeen", "ibm_17", compiler=True)
    search.register(registered=JAVASOFT + "JRE\\11.0.2")
    path = search.path("eight", "seventeen", "eleven")
    assert search.chosen(path) == "seventeen"
    assert search.chosen(path, **{LIST: "jre"}) == "registered"  # of equals, the registry's
    # The order of the list comes before that of the sources; empty tokens do not matter.
    assert search.chosen(path, **{HIGH: "0", LIST: "MSJ  JDK_J2 ALL"}) == "seventeen"
    quoted = path.replace(search.home("eight") + "\\bin", f'"{search.home("eight")}\\bin"')
    assert search.chosen(quoted, **{HIGH: "0"}) == "eight"


def test_kinds_in_path(search):
    """A VM without a version, told by its folder, and the Microsoft VM, which has no windowless namesake there."""
    (install_vm(search.base / "plain", "plain").parent / "server").mkdir()
    assert search.chosen(search.path("plain"), **{LIST: "J2"}) == "plain"
    for name in ("jview", "wjview"):
        install_stand_in(search.base / "ms" / "bin" / f"{name}.exe", "jview")
    assert search.chosen(search.path("plain", "ms"), **{LIST: "msj ALL", HIGH: "0"}) == r"ms\bin\wjview.exe"


@pytest.mark.parametrize("platform, expected", [(None, None), ("2", "vm"), ("3", "vm")])
def test_platform(search, platform, expected):
    """A 64-bit launcher gives every VM that it finds the class that 1, which is the default, does not admit."""
    install_vm(search.base / "vm")
    assert search.chosen(search.path("vm"), **{PLATFORM: platform}) == expected


def test_current_vm(search):
    install_vm(search.base / "eight", "sun_8")
    install_vm(search.base / "eleven", "sun_11")
    path = search.path("eleven")
    absolute = search.home("eight") + "/bin/java.exe"
    assert search.chosen(path, **{CURRENT: absolute}) == "eight"
    assert search.chosen(path, **{CURRENT: r"..\eight\bin\java.exe", LIST: None}) == "eight"
    # Not acceptable, no file: the search decides.
    assert search.chosen(path, **{CURRENT: absolute, LIST: "JDK"}) is None
    assert search.chosen(path, **{CURRENT: search.home("eight") + r"\bin"}) == "eleven"


def test_vm_in_the_system_folder(app, registry, host):
    registry.add({JAVASOFT + "Java Runtime Environment": {"CurrentVersion": "1.6"},
                  JAVASOFT + "Java Runtime Environment\\1.6": {"MicroVersion": "0"}})
    # No folder below it counts.
    programs = [host.system_folder() / name for name in ("java.exe", "javaw.exe", "bin/java.exe", "bin/javaw.exe")]
    try:
        for program in programs:
            install_stand_in(program, "plain")
        app.configure(**{LIST: "JRE_J2"})
        result = app.run()
    finally:
        for program in programs:
            program.unlink()
        program.parent.rmdir()
    assert result.boxes == []
    assert result.record["program"].lower() == r"c:\windows\system32\javaw.exe"
