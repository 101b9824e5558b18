"""Programs that know nothing of the launcher, started by it through ryn-start.jar on real runtimes."""
import json
import random
import shutil
import subprocess

import pytest

from harness import BUILD, LAUNCHER, ryn, windows_path

VERSIONS = [11, 17, 21, 25]
# Wine answers a question about processor groups with less than new runtimes expect.
QUIET = "-XX:-PrintWarnings"


@pytest.fixture
def tmp_path(tmp_path_factory):
    """Wine makes short names by a hash of 15 bits: among the long names of hundreds of tests two are the same, and a path
    of short names leads astray. A name that is short already stays."""
    return tmp_path_factory.mktemp("java")


@pytest.fixture
def make_plain(make_app, java_classes):
    """make_plain(folder, **properties): an application whose program prints what it was given."""
    def make(folder, **properties):
        app = make_app(folder)
        shutil.copytree(java_classes, app.folder / "classes")
        shutil.copy(BUILD / "ryn-start.jar", app.folder)
        app.configure(**{"ryn__class__path": "ryn-start.jar;classes", "ryn__start__class": "Plain",
                         "ryn__nl__java__launcher__main__class": "com.vantu.ryn.Start",
                         "ryn__nl__java__option__additional": QUIET} | properties)
        return app
    return make


def told(result):
    """What the program was given: arguments, system properties."""
    assert (result.boxes, result.exit_code, result.temp_files) == ([], 0, []), result.stderr
    facts = json.loads(result.stdout)
    return facts["arguments"], facts["properties"]


def doubled_quotes(argument):
    """Another way to write an argument than that of list2cmdline."""
    pieces = argument.split('"')
    ends = [piece + "\\" * (len(piece) - len(piece.rstrip("\\"))) for piece in pieces]
    return '"' + '""'.join(ends) + '"'


def long_line(seed):
    """As many arguments as fit what both command lines can hold, and the text that means them."""
    chosen = random.Random(seed)
    arguments, text = ["", r"C:\My Files\x" + "\\", r"D:\文 書\ü.txt"], r'"" "C:\My Files\x\\"   "D:\文 書\ü.txt"'
    while len(text) < 11000:
        arguments.append("".join(chosen.choices('ab=" \t\\é文😀*?%', k=chosen.randrange(9))))
        write = chosen.choice([lambda argument: subprocess.list2cmdline([argument]), doubled_quotes])
        text += " " * chosen.randrange(1, 3) + write(arguments[-1])
    return arguments, text


@pytest.mark.parametrize("version", VERSIONS)
def test_exact_arguments_and_facts(make_plain, runtime, version):
    app = make_plain("Größe 1", ryn__launch__arguments="exact")
    vm = runtime(version) / "bin" / "java.exe"
    arguments, text = long_line(version)
    found, properties = told(app.run(text, vm=vm, folder=app.folder.parent))
    assert found == arguments
    assert {name: value for name, value in properties.items() if name.startswith("ryn.")} == {
        "ryn.launch.file": windows_path(app.ryn), "ryn.launch.program": windows_path(app.program),
        "ryn.launch.start.folder": windows_path(app.folder.parent),
        "ryn.launch.vm": windows_path(vm.with_name("javaw.exe")), "ryn.launch.service": "false",
        "ryn.launch.console": "false"}


# As Explorer calls a program that files are dropped on; switches are the launcher's.
@pytest.mark.parametrize("text, expected", [
    (r'"C:\Ordner 1\文 é.txt" C:\x\a,b&c.txt "C:\Ordner 1"', [r"C:\Ordner 1\文 é.txt", r"C:\x\a,b&c.txt", r"C:\Ordner 1"]),
    (r'-tempdir "Z:\none" a "-i"  silent', ["a", "-i", "silent"]),
])
def test_arguments_of_a_user(make_plain, runtime, text, expected):
    app = make_plain("app", ryn__launch__arguments="exact")
    assert told(app.run(text, vm=runtime(17) / "bin" / "java.exe"))[0] == expected


@pytest.mark.parametrize("level, options", [("requireAdministrator", QUIET), ("asInvoker", f"{QUIET} -Dmine=1")])
def test_elevated_start_reads_no_options_of_a_user(host, make_plain, runtime, tmp_path, level, options):
    if level == "asInvoker" and host.elevates_all():
        pytest.skip("every program has an administrator's rights here")
    app = make_plain("app", ryn__user__options="app.vmoptions")
    (app.folder / "app.vmoptions").write_text("-Dmine=1")
    ryn("make", "--name", "Own", "--out", tmp_path / "own", "--main", "Plain", "--level", level, "--launcher", LAUNCHER, code=1)
    shutil.copy(tmp_path / "own" / "Own.exe", app.program)
    result = app.run(vm=runtime(17) / "bin" / "java.exe")
    assert ("mine" in told(result)[1]) == ("mine" in options) and f"{options} -classpath" in result.logged("cmd")


def test_nothing_is_left_behind(make_plain, runtime):
    app = make_plain("app")
    runs = [app.start(vm=runtime(17) / "bin" / "java.exe") for _ in range(4)]
    assert [told(run.wait())[0] for run in runs] == [[]] * 4


@pytest.mark.parametrize("version", VERSIONS)
def test_folders_beyond_the_code_page(make_plain, runtime, tmp_path, version):
    app = make_plain("応用 é", ryn__win32__short__paths="true", ryn__launch__arguments="exact",
                     # Of what is not there, too, nothing may get lost.
                     ryn__class__path="ryn-start.jar;classes;later.jar;classes/*")
    temp = tmp_path / "一時"
    temp.mkdir()
    names = {name: windows_path(temp) for name in ("TMP", "TEMP")}
    arguments, properties = told(app.run("文", vm=runtime(version) / "bin" / "java.exe", env=names))
    assert arguments == ["文"]
    assert properties["ryn.launch.file"] == windows_path(app.ryn)
    assert not list(temp.glob("ryn*.tmp"))
    assert [entry.count("?") for entry in properties["java.class.path"].split(";")] == [0] * 5
    if version == VERSIONS[0]:
        app.configure(ryn__nl__java__launcher__main__class="Plain", ryn__class__path="classes")
        assert app.run(vm=runtime(version) / "bin" / "java.exe", env=names).exit_code == 1
