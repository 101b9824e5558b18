"""The command-line program `ryn` on the system that built it."""
import hashlib
import io
import json
import os
import pathlib
import subprocess
import zipfile

import pefile
import pytest

RYN = os.environ["RYN_PROGRAM"]
LAUNCHER = os.environ["RYN_LAUNCHER_PATH"]


def ryn(*arguments, code=0):
    done = subprocess.run([RYN, *map(str, arguments)], capture_output=True, text=True, timeout=60)
    assert done.returncode == code, done.stdout + done.stderr
    return done.stdout or done.stderr


def write_files(folder, names, time=1_000_000_000):
    for name in names:
        path = folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(name.encode() * 50)
        os.utime(path, (time, time))
    return folder


RUNTIME = ["bin/java.exe", "bin/javaw.exe", "lib/größe.txt", "release"]


def test_a_pack_depends_on_names_and_contents_only(tmp_path):
    first, second = tmp_path / "a" / "jre.vm", tmp_path / "b" / "jre.vm"
    for pack, names, time in (first, RUNTIME, 1_000_000_000), (second, RUNTIME[::-1], 1_500_000_000):
        runtime = write_files(pack.parent / "runtime", names, time)
        report = json.loads(ryn("pack", "build", runtime, "--out", pack, "--json"))
    data = first.read_bytes()
    assert data == second.read_bytes()
    digest = hashlib.md5(data).hexdigest()
    assert report["schema"] == 1 and (report["size"], report["md5"]) == (len(data), digest)
    assert f".md5Checksum.value={digest}\n" in ryn("pack", "build", runtime, "--out", first)
    with zipfile.ZipFile(first) as outer, zipfile.ZipFile(io.BytesIO(outer.read("vm.zip"))) as inner:
        assert inner.testzip() is None and inner.namelist() == RUNTIME[2:] + RUNTIME[1::-1]
        assert b"jre" in outer.read("vm.properties")
    assert sorted(path.name for path in first.parent.iterdir()) == ["jre.vm", "runtime"]


@pytest.mark.parametrize("names, out, code, told", [
    (RUNTIME, "jre.zip", 2, "ends in .vm"),
    (RUNTIME, "no/such/folder.vm", 2, "cannot write"),
    (RUNTIME[1:], "jre.vm", 1, "java.exe"),
    ([*RUNTIME, "lib/nul.txt", "Release"], "jre.vm", 1, "lib/nul.txt"),
    ([], "jre.vm", 2, "cannot read"),
])
def test_what_is_no_pack_is_refused(tmp_path, names, out, code, told):
    write_files(tmp_path / "runtime", names)
    assert told in ryn("pack", "build", tmp_path / "runtime", "--out", tmp_path / out, code=code)
    assert not (tmp_path / out).exists()


def test_digests_of_all_lengths_of_the_last_block(tmp_path):
    runtime = write_files(tmp_path / "runtime", ["bin/java.exe"])
    lengths = set()
    for size in range(64):
        # Nothing that could be compressed, so that the pack grows byte by byte.
        (runtime / "noise").write_bytes(hashlib.shake_128().digest(size))
        report = json.loads(ryn("pack", "build", runtime, "--out", tmp_path / "a.vm", "--json"))
        assert report["md5"] == hashlib.md5((tmp_path / "a.vm").read_bytes()).hexdigest()
        lengths.add(report["size"] % 64)
    assert {0, 55, 56, 63} <= lengths


def make_jar(path, main_class=None):
    manifest = "Manifest-Version: 1.0\r\n" + (f"main-CLASS: {main_class[:5]}\r\n {main_class[5:]}\r\n" if main_class else "")
    with zipfile.ZipFile(path, "w") as jar:
        jar.writestr("META-INF/MANIFEST.MF", manifest + "\r\nName: a\r\nMain-Class: wrong\r\n")
        jar.writestr("first/Main.class", b"\xCA\xFE\xBA\xBE\0\0\0\x34")
    return path


def values_of(path):
    """The keys of a file of the launcher, which is as the launcher likes it."""
    text = path.read_text("ascii")
    assert text.endswith("\n")
    return dict(line.split("=", 1) for line in text.splitlines() if line and not line.startswith("#"))


def test_an_application_is_made_whole(tmp_path):
    write_files(tmp_path, ["b.jar"])
    make_jar(tmp_path / "größe.jar", "first.Main")
    runtime = write_files(tmp_path / "runtime", RUNTIME)
    texts = tmp_path / "texts"
    texts.mkdir()
    (texts / "de.txt").write_bytes(b"de.txt" * 30 + b"\r\n")
    config = tmp_path / "make.cfg"
    config.write_text('[make]\npublisher="Maker"\nheap-max="2g"\n')
    app = tmp_path / "dist" / "App"
    # What is there is checked as by `ryn check`.
    told = ryn("make", "--name", "Añp", "--out", app, "--version", "2.4.0.17", "--jar", tmp_path / "größe.jar",
               "--jar", tmp_path / "b.jar", "--java", "17+", "--runtime", runtime, "--config", config, "--console",
               "--no-vm-text", texts, "--option=-Dhome=C:\\users\\", '--option=-Dtitle=a "b" \\', code=1)
    assert "b.jar is no jar [bad-jar]\n" in told and "osslsigncode" in told
    assert sorted(path.relative_to(app).as_posix() for path in app.rglob("*") if path.is_file()) == sorted(
        ["Añp.exe", "Añp.ryn", "lib/größe.jar", "lib/b.jar", "lib/ryn-start.jar", *(f"jre/{name}" for name in RUNTIME)])
    assert list(app.parent.iterdir()) == [app]

    image = pefile.PE(app / "Añp.exe")
    strings = {key.decode(): value.decode() for info in image.FileInfo[0] if info.Key == b"StringFileInfo"
               for table in info.StringTable for key, value in table.entries.items()}
    assert (strings["ProductName"], strings["FileVersion"], strings["CompanyName"]) == ("Añp", "2.4.0.17", "Maker")
    assert image.verify_checksum()
    assert ("de.txt" * 30).encode("utf-16-le") in (app / "Añp.exe").read_bytes()

    assert values_of(app / "Añp.ryn") == {
        "ryn.application.name": r"A\u00f1p",
        "ryn.class.path": r"lib/ryn-start.jar;lib/gr\u00f6\u00dfe.jar;lib/b.jar",
        "ryn.nl.java.launcher.main.class": "com.vantu.ryn.Start",
        "ryn.start.jar": r"lib/gr\u00f6\u00dfe.jar",
        "ryn.launch.arguments": "exact",
        "ryn.stdout.redirect": "console",
        "ryn.nl.valid.vm.list": "17+",
        "ryn.nl.win32.java.launcher.platform": "2",
        "ryn.nl.current.vm": "jre/bin/java.exe",
        "ryn.win32.vm.bits": "64",
        "ryn.nl.java.option.java.heap.size.max": str(2 << 30),
        "ryn.nl.java.option.additional":
            r'-Dsun.java2d.uiScale.enabled=true -Dhome=C:\u005cusers\u005c "-Dtitle=a \u005c"b\u005c" \u005c\u005c"',
        "ryn.win32.short.paths": "true", "ryn.win32.job": "true", "ryn.service.stop.seconds": "20"}


DIGEST = "0123456789ABCDEF" * 2
VENDORS = pathlib.Path(__file__).parents[2] / "samples" / "vendors"


def test_an_application_says_where_its_java_comes_from(tmp_path):
    jar, old_runtime = make_jar(tmp_path / "a.jar", "first.Main"), write_files(tmp_path / "jre", ["jre/bin/java.exe"])

    def made(*options, code=0):
        ryn("make", "--name", "App", "--out", tmp_path / "App", "--jar", jar, *options, code=code)
        app = (tmp_path / "App").rename(tmp_path / str(len(list(tmp_path.iterdir()))))
        return app, values_of(app / "App.ryn")

    assert made("--runtime", old_runtime, code=1)[1]["ryn.nl.current.vm"] == "jre/jre/bin/java.exe"
    app, values = made("--pack", "https://example.com/jre.vm", "--digest", DIGEST, "--no-start")
    assert values == {
        "ryn.application.name": "App", "ryn.class.path": "lib/a.jar", "ryn.nl.java.launcher.main.class": "first.Main",
        "ryn.nl.valid.vm.list": "JRE JDK", "ryn.nl.win32.java.launcher.platform": "2",
        "ryn.nl.current.vm": "Windows/resource/jre/bin/java.exe"}
    url = "build.without.vm.not.found.download.url"
    assert values_of(app / "Windows/jvmspecs/jvmspecs.properties") == {
        "build.option": "withoutvm", "build.without.vm.search.option": "11", url: "https://example.com/jre.vm",
        f"{url}.md5Checksum.applicable": "true", f"{url}.md5Checksum.value": DIGEST.lower()}
    app, values = made("--vendors", "--main", "other.Main", code=1)
    assert values["ryn.start.class"] == "other.Main" and "ryn.start.jar" not in values
    for file in VENDORS.iterdir():
        assert (app / "jvmspecs" / file.name).read_bytes() == file.read_bytes()
    hints = (made("--vendors", "--level", "highestAvailable")[0] / "jvmspecs" / "vendors.txt").read_text()
    assert "%ProgramFiles%\\Java\\*" in hints and not any(hint in hints for hint in ("\n%PATH%", "USER\\", "\n%LOCALAPPDATA%"))


@pytest.mark.parametrize("change, told", [
    (["--name", "a/b"], "no name of a file"), (["--name", "nul"], "device"), (["--name", "a\nb"], "line end"),
    (["--version", "1.2.3.4.5"], "--version"), (["--version", "65536"], "--version"), (["--heap-max", "1t"], "1t"),
    (["--level", "root"], "--level"), (["--launcher", __file__], "test_ryn.py"), (["--jar", "/none.jar"], "/none.jar"),
    (["--jar", "/a/b.jar", "--jar", "/c/B.jar"], "also there"), (["--runtime", "tests"], "no Java for Windows"),
    (["--jar", "ryn-start.jar"], "also there"), (["--main", "a/b"], "no name of a class"), (["--main", ""], "--main or --jar"),
    (["--pack", "https://a/b.zip", "--digest", DIGEST], "end in .vm"), (["--pack", "file:///b.vm", "--digest", DIGEST], "begin with"),
    (["--pack", "https://a/b.vm", "--digest", DIGEST[1:]], "--digest"), (["--pack", "https://a/b.vm"], "--digest"),
    (["--vendors", "--runtime", "tests"], "excludes"),
])
def test_what_is_no_application_leaves_nothing(tmp_path, change, told):
    options = {"--name": "App", "--main": "a.Main"}
    plain = [word for option in options.items() if option[0] not in change for word in option]
    assert told in ryn("make", *plain, "--out", tmp_path / "App", *change, code=2)
    assert not list(tmp_path.iterdir())


def test_an_application_is_not_made_among_other_files(tmp_path):
    (tmp_path / "mine").touch()
    command = ["make", "--name", "App", "--launcher", LAUNCHER, "--main", "a.Main", "--no-start", "--out"]
    assert "empty" in ryn(*command, tmp_path, code=2)
    assert [path.name for path in tmp_path.iterdir()] == ["mine"]
    (tmp_path / "mine").unlink()
    report = json.loads(ryn(*command, tmp_path, "--json", code=1))
    assert report["files"] == ["App.exe", "App.ryn", "lib/"]
    assert [finding["rule"] for finding in report["check"]["findings"] if finding["severity"] == "error"] == ["class-path"]
    # A jar that cannot be read as one has no main class, either.
    assert "Main-Class" in ryn("make", "--name", "App", "--jar", LAUNCHER, "--out", tmp_path / "b", code=2)


def test_every_command_has_help_with_an_example():
    assert ryn("--version").startswith("ryn 1.")
    for command in [], ["pack"], ["pack", "build"], ["pack", "check"], ["make"], ["check"], ["explain"]:
        assert "Example: ryn " in ryn(*command, "--help")
    ryn(code=2)
