import subprocess

import pefile
import pytest

import harness

# What changes the user's own Windows, or needs programs of a Debian.
collect_ignore = [f"test_{name}.py" for name in ("explain", "folder_security", "make", "programs", "release")
                  if harness.ON_WINDOWS]


@pytest.fixture(scope="session")
def host():
    with harness.Host() as host:
        yield host


@pytest.fixture
def make_app(host, tmp_path):
    """Makes application folders: make_app(folder="app", name="hello"); ends what they still run."""
    apps = []

    def make(folder="app", **options):
        apps.append(harness.App(host, tmp_path / folder, **options))
        return apps[-1]

    yield make
    for app in apps:
        app.end()


@pytest.fixture
def app(make_app):
    """An application that takes every VM."""
    app = make_app()
    app.configure()
    return app


@pytest.fixture
def registry(host, tmp_path):
    registry = harness.Registry(host, tmp_path)
    yield registry
    registry.clear()


@pytest.fixture(scope="session")
def runtime():
    """runtime(17): the home folder of a real Windows runtime."""
    def find(major):
        home = harness.RUNTIMES / f"java-{major}"
        assert (home / "bin" / "java.exe").exists(), f"no Java {major} in {home}: run tools/setup"
        return home
    return find


@pytest.fixture(scope="session")
def java_classes(tmp_path_factory):
    """The compiled test applications, for every Java from 11 on."""
    target = tmp_path_factory.mktemp("classes")
    sources = sorted((harness.pathlib.Path(__file__).parent / "java").glob("*.java"))
    subprocess.run(["javac", "--release", "11", "-encoding", "UTF-8", "-d", target, *sources], check=True, timeout=120)
    return target


@pytest.fixture(scope="session")
def image():
    """The launcher as a PE file."""
    return pefile.PE(harness.LAUNCHER)


@pytest.fixture(scope="session")
def resources(image):
    """(type, name, language) to the bytes of each resource; type and name are numbers or texts."""
    return {(kind.id, name.id or str(name.name), language.id):
            image.get_data(language.data.struct.OffsetToData, language.data.struct.Size)
            for kind in image.DIRECTORY_ENTRY_RESOURCE.entries for name in kind.directory.entries
            for language in name.directory.entries}
