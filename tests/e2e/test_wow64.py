"""A launcher of 32 bits on 64-bit Windows. Skipped unless the launcher is one: see docs/testing.md."""
import pytest

from harness import LAUNCHER, image_bits, install_stand_in, install_vm, windows_path
from test_search import JAVASOFT, chosen  # noqa: F401

pytestmark = pytest.mark.skipif(image_bits(LAUNCHER) != 32, reason="the launcher is a 64-bit program")
PLATFORM = "ryn__nl__win32__java__launcher__platform"
BITS = "ryn__win32__vm__bits"


@pytest.fixture
def install(app):
    """install(32): a VM of so many bits under that name."""
    return lambda bits: install_vm(app.folder.parent / str(bits), bits=bits)


# Whatever comes first, the default, which is 1, takes what a 32-bit program sees of 64-bit Windows alone.
@pytest.mark.parametrize("properties, order, taken", [
    ({PLATFORM: None}, ("32", "64"), "64"), ({PLATFORM: None}, ("32",), None), ({PLATFORM: "1"}, ("32", "64"), "64"),
    ({PLATFORM: "3"}, ("64", "32"), "32"), ({PLATFORM: "3"}, ("64",), None),
    ({PLATFORM: "2"}, ("32", "64"), "64"), ({PLATFORM: "2"}, ("32",), "32"), ({BITS: "32"}, ("64", "32"), "32")])
def test_classes(install, chosen, properties, order, taken):
    for bits in order:
        install(int(bits))
    assert chosen(*order, **properties) == taken


@pytest.mark.parametrize("view, bits", [("64", 64), ("32", 32), ("64", 32), ("32", 64)])
def test_both_views_of_the_registry(app, install, chosen, host, request, view, bits):
    key = "HKLM\\" + JAVASOFT + "JRE"
    request.addfinalizer(lambda: host.wine("reg", "delete", "HKLM\\" + JAVASOFT[:-1], "/f", f"/reg:{view}"))
    home = windows_path(install(bits).parents[1])
    host.wine("reg", "add", key + "\\1.8.0", "/v", "JavaHome", "/d", home, "/f", f"/reg:{view}")
    host.wine("reg", "add", key + "\\1.8.0", "/v", "MicroVersion", "/d", "0", "/f", f"/reg:{view}")
    # What a view names is of its class, whatever the program.
    assert (chosen(**{PLATFORM: None}), chosen(**{PLATFORM: "2"})) == (str(bits) if view == "64" else None, str(bits))


@pytest.mark.parametrize("platform, folder", [(None, "system32"), ("2", "system32"), ("3", "syswow64")])
def test_system_folders_by_their_true_names(app, host, request, platform, folder):
    """What PATH calls system32 is not redirected; the other one is looked through though PATH does not name it."""
    programs = [(host.system_folder(bits) / name, bits) for bits in (32, 64) for name in ("java.exe", "javaw.exe")]
    request.addfinalizer(lambda: [program.unlink() for program, _ in programs])
    for program, bits in programs:
        install_stand_in(program, bits=bits)
    app.configure(**{PLATFORM: platform})
    assert app.run().record["program"].lower() == rf"c:\windows\{folder}\javaw.exe"
