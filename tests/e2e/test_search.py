"""Which of several VMs is taken: that the registry, PATH and the properties of a real machine reach the rules, which
are tables of the unit tests."""
import pytest

from harness import LAUNCHER, SYSTEM_PATH, image_bits, install_stand_in, install_vm, windows_path

JAVASOFT = "SOFTWARE\\JavaSoft\\"
LIST = "ryn__nl__valid__vm__list"
HIGH = "ryn__nl__jvm__high"
CURRENT = "ryn__nl__current__vm"


@pytest.fixture
def chosen(app):
    """chosen(VMs in PATH, properties...): the folder of the VM that ran, or None when the launcher found none."""
    def run(*names, **properties):
        app.configure(**properties)
        base = windows_path(app.folder.parent) + "\\"
        result = app.run(path=";".join([SYSTEM_PATH, *(f"{base}{name}\\bin" for name in names)]))
        if result.exit_code == 106:
            assert result.records == [] and len(result.boxes) == 1
            return None
        assert result.boxes == []
        return result.record["program"].removeprefix(base).removesuffix("\\bin\\javaw.exe")
    return run


def test_registry_and_path(app, registry, chosen):
    base = app.folder.parent
    for name, variant in (("registered", "sun_8"), ("eight", "sun_8"), ("seventeen", "ibm_17")):
        install_vm(base / name, variant, bits=image_bits(LAUNCHER), compiler=name == "seventeen")
    # Read with its minor number, which old versions need.
    registry.add({JAVASOFT + "JRE\\1.8.0_5000": {"JavaHome": windows_path(base / "registered"), "MicroVersion": "0"},
                  JAVASOFT + "JRE\\1.7.0": {"JavaHome": windows_path(base / "eight")}})
    assert chosen("eight", "seventeen") == "seventeen"
    assert chosen("eight", "seventeen", **{LIST: "jre"}) == "registered"
    assert chosen("eight", "seventeen", **{LIST: "MSJ  JRE_J2 ALL", HIGH: "0"}) == "eight"
    # A launcher gives VMs of its own bitness the class that 1, which is the default, does not admit.
    assert chosen(ryn__nl__win32__java__launcher__platform=None) is None


def test_microsoft_vm(app, chosen):
    """It has no windowless namesake."""
    for name in ("jview", "wjview"):
        install_stand_in(app.folder.parent / "ms" / "bin" / f"{name}.exe", "jview")
    assert chosen("ms", **{LIST: "msj"}) == r"ms\bin\wjview.exe"


def test_current_vm(app, chosen):
    install_vm(app.folder.parent / "eight", "sun_8")
    install_vm(app.folder.parent / "eleven", "sun_11")
    assert chosen("eleven", **{CURRENT: windows_path(app.folder.parent) + "/eight/bin/java.exe"}) == "eight"
    assert chosen("eleven", **{CURRENT: r"..\eight\bin\java.exe", LIST: None}) == "eight"
    assert chosen("eleven", **{CURRENT: r"..\eight\bin"}) == "eleven"  # no file


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
