"""The files of a release: from them alone an application is made, checked and started.
Skipped until `tools/release` has made them."""
import hashlib
import json
import re
import shutil
import subprocess
import tarfile

import pefile
import pytest

import harness
from harness import App

DIST = harness.REPOSITORY / "build" / "dist"
pytestmark = pytest.mark.skipif(not DIST.is_dir(), reason="tools/release makes them")


def run(*command, code=0, **options):
    done = subprocess.run(list(map(str, command)), capture_output=True, text=True, timeout=300, **options)
    assert done.returncode == code, done.stdout + done.stderr
    return done.stdout


@pytest.fixture(scope="session")
def release(tmp_path_factory):
    """The folder that comes out of the archives."""
    folders = [tmp_path_factory.mktemp(kind) for kind in ("zip", "tar")]
    with tarfile.open(*DIST.glob("*.tar.gz")) as archive:
        archive.extractall(folders[1])
    run("python3", "-m", "zipfile", "-e", *DIST.glob("*.zip"), folders[0])
    contents = [{path.relative_to(folder): path.read_bytes() for path in folder.rglob("*") if path.is_file()}
                for folder in folders]
    assert contents[0] == contents[1]
    (release,) = folders[1].iterdir()
    return release


@pytest.fixture
def hello(release, tmp_path):
    """The sample that comes along, compiled."""
    source = release / "samples/hello/src/hello/Hello.java"
    run("javac", "--release", "11", "-encoding", "UTF-8", "-d", tmp_path / "classes", source)
    run("jar", "--create", "--file", tmp_path / "hello.jar", "--main-class", "hello.Hello",
        "-C", tmp_path / "classes", ".")
    return tmp_path / "hello.jar"


def test_an_application_is_made_checked_and_started(release, hello, host, runtime, tmp_path):
    out = tmp_path / "Größe"
    run(release / "ryn", "make", "--name", "Hello", "--out", out, "--jar", hello, "--java", "17+",
        "--runtime", runtime(17))
    run(release / "ryn", "check", out)
    app = App(host, out, "Hello")
    result = app.run('"two words" exit=42', limit=120)
    assert (result.exit_code, result.boxes) == (42, []) and b"[two words]" in result.stdout
    report = json.loads(run(*host.command(release / "ryn.exe", "explain", "--json", app.program), env=host.environment))
    assert report["program"].startswith(app.windows_folder() + "\\jre\\bin\\java")


MAVEN = ["mvn", "--batch-mode", "--quiet", "-Dmaven.repo.local={kept}/m2", "-Dryn.repository={files}", "package"]
GRADLE = ["gradle", "--no-daemon", "--quiet", "--gradle-user-home={kept}/gradle", "-PrynRepository={files}", "application"]


@pytest.mark.parametrize("command, folder", [(MAVEN, "maven/target"), (GRADLE, "gradle/build")], ids=["maven", "gradle"])
def test_build_tools_make_one(release, tmp_path, command, folder):
    """By the samples' builds. What they get from the network stays in build/."""
    if not shutil.which(command[0]):
        pytest.skip("tools/setup builders installs it")
    shutil.copytree(release / "samples", tmp_path / "samples")
    kept = harness.REPOSITORY / "build"
    shutil.rmtree(kept / "m2" / "com" / "vantu", ignore_errors=True)
    run(*(word.format(kept=kept, files=(DIST / "maven").as_uri()) for word in command),
        cwd=tmp_path / "samples" / folder.split("/")[0])
    made = tmp_path / "samples" / folder / "Hello"
    names = sorted(path.name for path in made.rglob("*.*"))
    assert names == ["Hello.exe", "Hello.ryn", "hello-1.2.0.jar", "ryn-start.jar"]
    run(release / "ryn", "check", made)


def test_what_is_in_it(release):
    bits = {"launcher/x64/launcher.exe": 0x8664, "launcher/x86/launcher.exe": 0x14C, "ryn.exe": 0x8664}
    bits = {release / name: machine for name, machine in bits.items() if (release / name).exists()}
    assert len(bits) >= 2
    for path, machine in bits.items():
        header = pefile.PE(path, fast_load=True).FILE_HEADER
        assert (header.Machine, header.TimeDateStamp) == (machine, 0), path
    for path in release.rglob("*"):
        assert path.is_dir() or str(harness.REPOSITORY).encode() not in path.read_bytes(), path
    bill = json.loads((release / "sbom.cdx.json").read_text())
    hashes = {part["name"]: part["hashes"][0]["content"] for part in bill["components"] if "hashes" in part}
    assert hashes == {name: hashlib.sha256((release / name).read_bytes()).hexdigest() for name in hashes}
    assert len(hashes) >= 5
    notices = (release / "THIRD-PARTY-NOTICES").read_text()
    for name in ("LICENSE", "CHANGELOG.md", "samples/vendors/vendors.txt", "lib/Verify.jar"):
        assert (release / name).stat().st_size
    linked = {part["name"] for part in bill["components"]}
    assert {"zlib", "minizip", "CLI11", "winpthreads"} <= linked & set(notices.split("\n"))
    run("sha256sum", "--check", "SHA256SUMS", cwd=DIST)
    for page in [*release.glob("*.md"), *release.glob("docs/*.md")]:
        for link in re.findall(r"\]\(([^)#:]+)[)#]", page.read_text("utf-8")):
            assert (page.parent / link).exists(), f"{page.name}: {link}"
