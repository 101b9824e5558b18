"""A launcher of 32 bits on 64-bit Windows. Skipped unless the launcher is one: see docs/testing.md."""
import pefile
import pytest

import harness
from harness import install_vm, windows_path
from test_search import JAVASOFT, chosen  # noqa: F401

pytestmark = pytest.mark.skipif(pefile.PE(harness.LAUNCHER, fast_load=True).FILE_HEADER.Machine != 0x14C,
                                reason="the launcher is a 64-bit program")
PLATFORM = "ryn__nl__win32__java__launcher__platform"


@pytest.fixture
def install(app, monkeypatch):
    """install(32): a VM of so many bits under that name."""
    def make(bits):
        with monkeypatch.context() as patch:
            build = harness.REPOSITORY / "build" / ("release-x86" if bits == 32 else "release")
            patch.setattr(harness, "FIXTURES", build / "tests" / "fixtures")
            return install_vm(app.folder.parent / str(bits))
    return make


# Whatever comes first, the default takes what a 32-bit program sees of 64-bit Windows alone.
@pytest.mark.parametrize("platform, order, taken", [
    (None, ("32", "64"), "64"), (None, ("32",), None), ("3", ("64", "32"), "32"), ("3", ("64",), None),
    ("2", ("64",), "64"), ("2", ("32",), "32")])
def test_classes(install, chosen, platform, order, taken):
    for bits in order:
        install(int(bits))
    assert chosen(*order, **{PLATFORM: platform}) == taken


@pytest.mark.parametrize("view, bits", [("64", 64), ("32", 32), ("64", 32), ("32", 64)])
def test_both_views_of_the_registry(app, install, chosen, host, request, view, bits):
    key = "HKLM\\" + JAVASOFT + "JRE"
    request.addfinalizer(lambda: host.wine("reg", "delete", key, "/f", f"/reg:{view}"))
    home = windows_path(install(bits).parents[1])
    host.wine("reg", "add", key + "\\1.8.0", "/v", "JavaHome", "/d", home, "/f", f"/reg:{view}")
    host.wine("reg", "add", key + "\\1.8.0", "/v", "MicroVersion", "/d", "0", "/f", f"/reg:{view}")
    # What a view names is of its class, whatever the program.
    assert (chosen(**{PLATFORM: None}), chosen(**{PLATFORM: "2"})) == (str(bits) if view == "64" else None, str(bits))


def test_a_vm_among_the_files_of_64_bit_windows(install, app, host, request):
    """Which the system folder is for such a program only by another name."""
    programs = [host.system_folder() / name for name in ("java.exe", "javaw.exe")]
    request.addfinalizer(lambda: [program.unlink() for program in programs])
    for program in programs:
        harness.install_stand_in(program)
    app.configure(**{PLATFORM: None})
    assert app.run(vm=host.system_folder().parent / "sysnative" / "javaw.exe").exit_code == 0
