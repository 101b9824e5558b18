"""ryn.exe looks through folders and packs as the program of this system does."""
import json
import subprocess
import zipfile

import pytest

import harness
from harness import RYN


@pytest.mark.parametrize("command", [["check", "größe"], ["pack", "check", "größe/jre.vm"]])
def test_findings_on_windows(host, tmp_path, command):
    folder = tmp_path / "größe"
    folder.mkdir()
    (folder / "App.ryn").write_text("ryn.class.path=LIB/*\nryn.win32.jbo=true\nryn.application.name=ö\n", encoding="utf-8")
    for path, name, data in (folder / "lib" / "a.jar", "a/Main.class", b""), (folder / "vm.zip", "größe/nul", b"x"), (
            folder / "jre.vm", "vm.zip", (folder / "vm.zip")):
        path.parent.mkdir(exist_ok=True)
        with zipfile.ZipFile(path, "w") as archive:
            archive.writestr(name, data if isinstance(data, bytes) else data.read_bytes())
    reports = []
    for program in host.command(harness.BUILD / "ryn" / "ryn.exe"), [RYN]:
        done = subprocess.run([*program, *command, "--json"], env=host.environment, cwd=tmp_path, capture_output=True,
                              timeout=120)
        assert done.returncode == 1, done.stderr
        reports.append(json.loads(done.stdout))
    assert reports[0] == reports[1] and len(reports[0]["findings"]) > 2
