"""ryn-start.jar on the Java of this machine, with property files and facts as the launcher writes them."""
import os
import pathlib
import random
import re
import shutil
import subprocess
import time
import zipfile

import pytest

REPOSITORY = pathlib.Path(__file__).resolve().parents[2]
START_JAR = REPOSITORY / os.environ.get("RYN_BUILD_DIR", "build/release") / "ryn-start.jar"
SOURCES = pathlib.Path(__file__).parent / "src"
LIMIT_SECONDS = 60


def compile_java(target, *arguments):
    subprocess.run(["javac", "-encoding", "UTF-8", "-d", target, *arguments], check=True, timeout=LIMIT_SECONDS)
    return target


@pytest.fixture(scope="session")
def classes(tmp_path_factory):
    folder = tmp_path_factory.mktemp("classes")
    (folder / "Beside.java").write_text("public class Beside {}")
    (folder / "Plain.java").write_text("class Plain { int main; }")
    return compile_java(folder, "-cp", START_JAR, *folder.glob("*.java"), *SOURCES.glob("*.java"))


@pytest.fixture
def drive(classes, tmp_path):
    def drive(mode, content):
        path = tmp_path / "input"
        path.write_bytes(content)
        done = subprocess.run(["java", "-cp", f"{START_JAR}:{classes}", "com.vantu.ryn.Driver", mode, path], check=True,
                              capture_output=True, timeout=LIMIT_SECONDS)
        return [line.split("\x1f") for line in done.stdout.decode("utf-8").split("\n")[:-1]]
    return drive


def write_jar(path, *classes, **manifest):
    with zipfile.ZipFile(path, "w") as jar:
        if manifest:
            lines = "".join(f"{key.replace('_', '-')}: {value}\n" for key, value in manifest.items())
            jar.writestr("META-INF/MANIFEST.MF", f"Manifest-Version: 1.0\n{lines}")
        for file in classes:
            jar.write(file, file.name)


class App:
    """An application folder as `App.ryn` and its jars."""

    def __init__(self, folder, classes):
        self.folder = folder / "app"
        (self.folder / "lib").mkdir(parents=True)
        self.ryn = self.folder / "App.ryn"
        self.temp_folder = folder
        self.jar = self.folder / "lib" / "app.jar"
        self.environment = os.environ | {"LOCALAPPDATA": str(folder / "local"), "LC_ALL": "C.UTF-8"}
        # The manifest of one jar leads to the other.
        write_jar(self.jar, *classes.glob("Probe*.class"), Main_Class="Probe", Class_Path="beside.jar")
        write_jar(self.folder / "lib" / "beside.jar", classes / "Beside.class")
        self.processes = []

    def start(self, *arguments, settings=None, facts=None, class_path=(), options=(), environment=None, temp=None,
              **streams):
        settings = {"ryn.start.jar": "lib/app.jar"} if settings is None else settings
        self.ryn.write_text("".join(f"{key}={value}\n" for key, value in settings.items()))
        escape = lambda text: "".join(c * 2 if c == "\\" else c if ord(c) < 128 else f"\\u{ord(c):04x}" for c in str(text))
        self.temp = self.temp_folder / f"ryn{len(self.processes):X}.tmp"
        self.temp.write_text("".join(f"{key}={escape(value)}\n" for key, value in (facts or {}).items()))
        path = os.pathsep.join(map(str, [START_JAR, *class_path]))
        process = subprocess.Popen(
            ["java", "-Xshare:auto", *options, "-cp", path, "com.vantu.ryn.Start", self.ryn,
             self.temp if temp is None else temp, *arguments], cwd=self.folder, stdout=subprocess.PIPE,
            stderr=subprocess.PIPE, env=self.environment | (environment or {}),
            **({"stdin": subprocess.DEVNULL} | streams))
        self.processes.append(process)
        return process

    def run(self, *arguments, **options):
        return finish(self.start(*arguments, **options))


def finish(process, stdin=None):
    """Lines of output, text of standard error, exit code."""
    output, error = process.communicate(stdin, timeout=LIMIT_SECONDS)
    return output.decode().splitlines(), error.decode(), process.returncode


@pytest.fixture
def app(tmp_path, classes):
    app = App(tmp_path, classes)
    yield app
    for process in app.processes:
        process.kill()
        process.communicate()


def test_property_files_read_as_by_the_launcher(drive):
    content = (b"#x=1\n  #x=1\na = b \r\nk:v\nk=v=w\n=e\npath=C:\\\\dir\\\nnext=n\nname=\\u0041\\u00e9x\none=\\u00411\n"
               b"kept=a\\tb\\=\nnone=[\\users]\ntwo=1\ntwo=2\nbyte=\xc3\xa9\n\n \nlast=end")
    expected = {"#x": "1", "a": "b", "k": "v=w", "": "e", "path": "C:\\\\dir ", "next": "n", "name": "Aéx", "one": "A1",
                "kept": "a\\tb\\=", "none": "[\0sers]", "two": "2", "byte": "Ã©", "last": "end\uffff"}
    assert dict(drive("properties", content)) == expected


def test_command_lines_are_divided_as_windows_does(drive):
    table = {
        r'"C:\My App\a.exe"': [],
        r'C:\app\a.exe a   b' + "\tc": ["a", "b", "c"],
        r'a.exe "" x " " ""': ["", "x", " ", ""],
        r'"C:\dir\"x y': ["y"],
        r'a "a    b" in"si de"d': ["a    b", "insi ded"],
        r'a "say ""hi""" """" """': ['say "hi"', '"', '"'],
        r'a "x""y z" a""b': ['x"y z', "ab"],
        r'a \"q\" \\"a b\\" a\\\"b c\d \\srv\x': ['"q"', "\\a b\\", 'a\\"b', r"c\d", r"\\srv\x"],
        r'a "C:\My Files\\" z "open to the end': ["C:\\My Files\\", "z", "open to the end"],
        'a *.txt "*.txt" %PATH% @f größe 文 😀': ["*.txt", "*.txt", "%PATH%", "@f", "größe", "文", "😀"],
        # Only words that the launcher took for switches go.
        r'a -tqrynservice S -i console -tempdir "C:\my temp" x silent': ["x", "silent"],
        r'a -i -tempdir T -i other "-i" console -I console': ["-i", "-i", "other", "-i", "console", "-I", "console"],
        r'a -i -i console -tqrynservice': ["-i", "-i", "console"],
        r'a x -i': ["x", "-i"],
        r'a x -tempdir': ["x", "-tempdir"],
        r'a "x -i console"': ["x -i console"],
    }
    # Whatever a program wants to hand on, written by the rules that Microsoft publishes.
    chosen = random.Random(13)
    for _ in range(5000):
        arguments = ["".join(chosen.choices('ab" \t\\é文', k=chosen.randrange(9))) for _ in range(chosen.randrange(1, 6))]
        table[subprocess.list2cmdline([r"C:\Program Files\x\a.exe", *arguments])] = arguments
    found = drive("lines", "\n".join(table).encode("utf-8"))
    assert found == [arguments or [""] for arguments in table.values()]


def test_arguments_and_facts(app):
    facts = {"ryn.nl.current.vm": r"C:\jdk\bin\javaw.exe", "ryn.launch.service": "false", "ryn.nl.env.path": "secret",
             "ryn.launch.start.folder": r"C:\größe\文"}
    names = ["ryn.launch.file", "ryn.launch.vm", "ryn.launch.service", "ryn.launch.start.folder", "ryn.launch.console"]
    output, error, code = app.run("properties", *names, facts=facts)
    values = [app.ryn, facts["ryn.nl.current.vm"], "false", facts["ryn.launch.start.folder"], "null"]
    assert (output, error, code) == ([f"{name}={value}" for name, value in zip(names, values)], "", 0)
    assert not app.temp.exists()

    line = r'"C:\app\App.exe" "" "a   b" C:\x 文'
    assert app.run("given", r"C:\\x", facts={}) == ([r"given|C:\\x"], "", 0)
    assert app.run("given", facts={"ryn.launch.command.line": line}) == ([r"|a   b|C:\x|文"], "", 0)
    # A path that arrives damaged is found in the environment, which also holds older ones.
    exact = app.folder / "ryn1A2B.tmp"
    for name, expected in ("ryn1a2b.tmp", "exact"), ("ryn7.tmp", "given"):
        exact.write_text("ryn.launch.command.line=a exact")
        output, error, code = app.run("given", temp=f"/lost?/{name}", environment={"RYN_LAUNCH_PROPERTIES": str(exact)})
        assert (output, code) == ([expected], 0)
    # Without facts, and without even a file for them.
    assert app.run("given", "x", temp="") == (["given|x"], "", 0)


@pytest.mark.parametrize("on_class_path", [False, True])
def test_loader_of_a_jar(app, on_class_path):
    # Spelled in another way, as short names are.
    entries = [app.folder / "lib" / ".." / "lib" / "app.jar"] if on_class_path else []
    assert app.run("loaders", class_path=entries)[0] == [str(on_class_path).lower(), "true", "Beside"]


@pytest.mark.parametrize("mode", ["throw", "broken", "exit 7"])
def test_ends_as_a_direct_start_does(app, mode):
    direct = subprocess.Popen(["java", "-jar", app.jar, *mode.split()], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              env=app.environment)
    expected = finish(direct)
    assert app.run(*mode.split()) == expected
    assert expected[2] == (7 if "exit" in mode else 1)


def test_modules(app, tmp_path):
    source = tmp_path / "source"
    (source / "inner").mkdir(parents=True)
    (source / "module-info.java").write_text("module the.app {}")
    (source / "inner" / "Main.java").write_text(
        "package inner; class Main { public static void main(String[] a) {"
        " System.out.println(Main.class.getModule() + \" \" + a[0]); } }")
    compile_java(tmp_path / "modules", source / "module-info.java", source / "inner" / "Main.java")
    settings = {"ryn.start.module": "the.app/inner.Main"}
    options = []
    # Each failure names the option that was missing.
    for _ in range(2):
        error = app.run("x", settings=settings, options=options)[1]
        added = re.search(r"--add-(modules|opens) \S+", error).group().rstrip(".")
        options += ["--module-path", str(tmp_path / "modules")] * (not options) + added.split()
    assert app.run("x", settings=settings, options=options) == (["module the.app x"], "", 0)
    assert "names no main class" in app.run(settings={"ryn.start.module": "the.app"}, options=options)[1]


def test_what_cannot_be_started(app, classes):
    young = bytearray((classes / "Probe.class").read_bytes())
    young[7] = 44 + 99
    (app.folder / "Probe.class").write_bytes(young)
    shutil.copy(classes / "Plain.class", app.folder)
    write_jar(app.folder / "bare.jar")
    write_jar(app.folder / "gone.jar", Main_Class="x.Gone")
    (app.folder / "text.jar").write_text("no zip")
    java = subprocess.run(["java", "-XshowSettings:properties", "-version"], capture_output=True, text=True).stderr
    version = re.search(r"java.specification.version = (\S+)", java).group(1)
    for settings, sentence in [
        ({"ryn.start.jar": "lib/none.jar"}, f"There is no jar {app.folder}/lib/none.jar."),
        ({"ryn.start.jar": "bare.jar"}, f"The manifest of {app.folder}/bare.jar names no Main-Class."),
        ({"ryn.start.jar": "text.jar"}, f"The jar {app.folder}/text.jar cannot be read: "),
        ({"ryn.start.jar": "gone.jar"}, f"There is no class x.Gone in {app.folder}/gone.jar."),
        ({"ryn.start.class": "Gone"}, f"There is no class Gone in the class path {START_JAR}:{app.folder}."),
        ({"ryn.start.class": "Probe"}, f"The class Probe in the class path {START_JAR}:{app.folder} was compiled for "
                                       f"Java 99, this is Java {version}."),
        ({"ryn.start.class": "Plain"}, 'has no method "public static void main(String[])".'),
        ({"ryn.start.class": "probe"}, "There is no class probe in"),
        ({"ryn.start.module": "no.such"}, "There is no module no.such in the module path"),
        ({}, f"The file {app.ryn} has none of ryn.start.jar, ryn.start.class and ryn.start.module."),
        ({"ryn.start.jar": "a", "ryn.start.class": "b"}, "has more than one of"),
    ]:
        output, error, code = app.run(settings=settings | {"ryn.stderr.redirect": "out.log"}, class_path=[app.folder],
                                      facts={"ryn.nl.current.vm": "the-vm", "ryn.launch.service": "false"})
        assert (output, code) == ([], 1)
        assert error.startswith("App could not be started.\n" + sentence) or sentence in error, error
        assert f"Settings: {app.ryn}\n" in error and "the-vm\n" in error and f"Log: {app.folder}/out.log\n" in error
        assert (app.folder / "out.log").read_text() == error
        (app.folder / "out.log").unlink()
    app.ryn.unlink()
    error = subprocess.run(["java", "-jar", START_JAR, app.ryn, "", "x"], capture_output=True, text=True).stderr
    assert f"The file {app.ryn} cannot be read" in error


def test_redirects(app):
    settings = {"ryn.start.jar": "lib/app.jar", "ryn.stdout.redirect": "%Place%/%Undefined%%Place%/out.txt",
                "ryn.stderr.redirect": "Console"}
    log = app.folder / "logs ü" / "%Undefined%logs ü" / "out.txt"
    environment = {"Place": "logs ü"}
    for _ in range(2):
        output, error, code = app.run("lines", "4", settings=settings, environment=environment)
        assert (output, error, code) == ([], "grüße 1\ngrüße 3\n", 0)
    assert log.read_text("utf-8") == "grüße 0\ngrüße 2\n" * 2
    assert app.run("properties", "ryn.launch.log", settings=settings | {"ryn.stdout.redirect": "lib"})[0] == [
        "ryn.launch.log=null"]

    # One file for both, appended to, and this launch on a console.
    settings |= {"ryn.stderr.redirect": settings["ryn.stdout.redirect"]}
    assert app.run("lines", "3", settings=settings, environment=environment) == ([], "", 0)
    assert log.read_text("utf-8").endswith("grüße 2\ngrüße 0\ngrüße 1\ngrüße 2\n")
    console = {"ryn.stdout.redirect": "console", "ryn.stderr.redirect": "console"}
    assert app.run("lines", "2", settings=settings, facts=console) == (["grüße 0"], "grüße 1\n", 0)

    output, error, code = app.run("lines", "2", settings=settings | {"ryn.stdout.redirect": "lib"},
                                  environment=environment)
    assert (output, code) == (["grüße 0"], 0)
    assert re.fullmatch(rf"ryn.stdout.redirect is left out, the file cannot be opened: {app.folder}/lib \(.*\)\n", error)


def test_files_are_rolled_while_they_grow(app):
    settings = {"ryn.start.jar": "lib/app.jar", "ryn.stdout.redirect": "out", "ryn.stderr.redirect": "out",
                "ryn.start.log.size": "1k", "ryn.start.log.keep": 2}
    (app.folder / "out").write_text("old\n" * 250)
    app.run("lines", "600", settings=settings)
    files = sorted(app.folder.glob("out*"))
    assert [file.name for file in files] == ["out", "out.1", "out.2"]
    texts = [file.read_text("utf-8") for file in reversed(files)]
    # No line is lost or divided: what is left is the end of what was written.
    everything = "".join(f"grüße {i}\n" for i in range(600))
    assert everything.endswith("".join(texts))
    assert all(1000 < len(text.encode("utf-8")) <= 1024 for text in texts[:2])


def test_input(app):
    process = app.start("serve", facts={"ryn.launch.stop.input": "true"}, stdin=subprocess.PIPE)
    assert process.stdout.readline() == b"started\n"
    # What the program reads ends, too; hooks run.
    output, error, code = finish(process)
    assert (sorted(set(output) - {"-1"}), error, code) == (["hook"], "", 0)
    for facts in {}, {"ryn.launch.stop.input": "false"}:
        assert finish(app.start("input", facts=facts, stdin=subprocess.PIPE), b"A") == (["65"], "", 0)


def test_single_instance(app):
    settings = {"ryn.start.jar": "lib/app.jar", "ryn.start.single.instance": "true"}

    def start_first():
        first = app.start("listen", settings=settings, stdin=subprocess.PIPE)
        assert first.stdout.readline() == b"started\n"
        return first

    first = start_first()
    began = time.monotonic()
    others = [app.start(str(i), "a b", "", "文", settings=settings, facts={"ryn.launch.start.folder": "/x/here"})
              for i in range(3)]
    assert [finish(other) for other in others] == [([], "", 0)] * 3
    # Kept until the program listens.
    first.stdin.write(b"\n")
    first.stdin.flush()
    assert sorted(first.stdout.readline().decode() for _ in others) == [f"{i}|a b||文 in here\n" for i in range(3)]
    assert finish(app.start("late", settings=settings)) == ([], "", 0)
    assert first.stdout.readline().decode() == "late in app\n"
    assert time.monotonic() - began < 10, "somebody waited for a limit"

    # Killed, it leaves nothing that keeps a next one from being the first; another application is its own.
    first.kill()
    first.wait()
    start_first()
    app.ryn = app.folder / "Other.ryn"
    assert finish(app.start("arguments", settings=settings))[0] == ["arguments"]
