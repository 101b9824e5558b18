"""The command-line program `ryn` on the system that built it."""
import hashlib
import io
import json
import os
import subprocess
import zipfile

import pytest

RYN = os.environ["RYN_PROGRAM"]
LAUNCHER = os.environ["RYN_LAUNCHER_PATH"]


def ryn(*arguments, code=0):
    done = subprocess.run([RYN, *map(str, arguments)], capture_output=True, text=True, timeout=60)
    assert done.returncode == code, done.stdout + done.stderr
    return done.stdout if code == 0 else done.stderr


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


def test_every_command_has_help_with_an_example():
    assert ryn("--version").startswith("ryn 1.")
    for command in [], ["pack"], ["pack", "build"]:
        assert "Example: ryn " in ryn(*command, "--help")
    ryn(code=2)
