"""Programs from Maven Central as they are: made into applications by `ryn make --jar`, they do as by java itself.
Skipped until `tools/setup programs` has fetched them."""
import concurrent.futures
import contextlib
import re
import shutil
import socket
import subprocess

import pytest
import Xlib.display

from harness import REPOSITORY, App, ryn, wait_until, windows_path
from test_real_vm import WM_CLOSE, width_of_window
from test_service import service  # noqa: F401

PROGRAMS = REPOSITORY / "build" / "programs"
pytestmark = pytest.mark.skipif(not PROGRAMS.is_dir(), reason="tools/setup programs fetches them")

BUILD_FILE = """<project default="all">
  <target name="all"><echo>${who}</echo><copy file="in.txt" tofile="out.txt"/></target>
  <target name="broken"><fail status="3">on purpose</fail></target>
</project>"""
TEST_CLASS = """public class SomeTest {
  @org.junit.jupiter.api.Test void good() {}
  @org.junit.jupiter.api.Test void bad() { org.junit.jupiter.api.Assertions.assertEquals("é", "x y"); }
}"""
# Jars, main class (None: that of the first jar), arguments, exit code.
CASES = {
    "H2": (["h2"], "org.h2.tools.Shell",
           ["-url", "jdbc:h2:mem:", "-user", "sa", "-password", "", "-sql", r"select 'a  b\' || '""', 1"], 0),
    "H2 in error": (["h2"], "org.h2.tools.Shell", ["-url", "jdbc:none:"], 1),
    "Ant": (["ant-1", "ant-launcher"], "org.apache.tools.ant.Main", ["-f", "build file.xml", r"-Dwho=C:\a b" + "\\"], 0),
    "Ant in error": (["ant-1", "ant-launcher"], "org.apache.tools.ant.Main", ["-f", "build file.xml", "broken"], 3),
    "JUnit": (["junit"], None, ["execute", "--disable-banner", "--disable-ansi-colors", "-cp", "the tests", "--scan-classpath"], 1),
    "ANTLR": (["antlr4"], None, ["-o", r"out\deep", "My Words.g4"], 1),
    "ANTLR on a file": (["antlr4"], None, ["-o", r"out\deep", "Words.g4"], 0),
}


def fetched(name):
    (path,) = PROGRAMS.glob(name + "*.jar")
    return path


def java(app, *arguments):
    """Java itself, the one beside the application, in its folder."""
    return subprocess.Popen(app.host.command(app.folder / "jre" / "bin" / "java.exe", *arguments), cwd=app.folder,
                            env=app.host.environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE)


@pytest.fixture
def program(host, runtime, tmp_path):
    """program(jars, main class): an application of these jars, and what to tell java for the same."""
    apps = []

    def make(jars, main_class):
        folder = tmp_path / "programs ü"
        names = [fetched(name).name for name in jars]
        options = [word for name in names for word in ("--jar", PROGRAMS / name)]
        ryn("make", "--name", "Program", "--out", folder, "--java", "17", "--runtime", runtime(17), *options,
            *(["--main", main_class] if main_class else []))
        apps.append(App(host, folder, "Program"))
        return apps[-1], ["-cp", ";".join(f"lib/{name}" for name in names), main_class] if main_class else ["-jar", f"lib/{names[0]}"]
    yield make
    for app in apps:
        app.end()


def comparable(text):
    """Without what differs from run to run, and what the launcher and Wine say."""
    lines = [line for line in text.decode("cp1252").splitlines() if not line.startswith(("cwd: ", "cmd: ", "wine: "))]
    return re.sub(r"\d+ (ms|seconds?)|\(\d+ row.*?\)|0x[0-9a-f]+", "", "\n".join(lines))


@pytest.mark.parametrize("name", CASES)
def test_runs_as_by_java_itself(program, name):
    jars, main_class, arguments, code = CASES[name]
    app, direct = program(jars, main_class)
    work = app.folder
    (work / "build file.xml").write_text(BUILD_FILE)
    (work / "in.txt").write_text("x")
    (work / "Words.g4").write_text("grammar Words; all: 'a'*;")
    (work / "My Words.g4").write_text("grammar Other; all: 'a'*;")
    if name == "JUnit":
        (work / "SomeTest.java").write_text(TEST_CLASS, encoding="utf-8")
        subprocess.run(["javac", "--release", "11", "-encoding", "UTF-8", "-cp", fetched("junit"), "-d", work / "the tests",
                        work / "SomeTest.java"], check=True, timeout=120)

    def outcome(run, output, error):
        made = sorted(str(path.relative_to(work)) for path in work.rglob("*") if path.is_file())
        shutil.rmtree(work / "out", ignore_errors=True)
        (work / "out.txt").unlink(missing_ok=True)
        return run, comparable(output), comparable(error), made

    plain = java(app, *direct, *arguments)
    output, error = plain.communicate(timeout=120)
    expected = outcome(plain.returncode, output, error)
    ours = app.run(subprocess.list2cmdline(arguments), limit=120)
    assert outcome(ours.exit_code, ours.stdout, ours.stderr) == expected
    assert (ours.boxes, ours.exit_code, ours.temp_files) == ([], code, [])


def test_swing(program, host):
    app, direct = program(["antlr4"], "org.antlr.v4.gui.Interpreter")
    (app.folder / "Words.g4").write_text("grammar Words; all: 'a'*;")
    (app.folder / "in.txt").write_text("aaa")
    arguments = ["Words.g4", "all", "-tree", "-gui", "in.txt"]
    with contextlib.closing(Xlib.display.Display(host.environment["DISPLAY"])) as display:
        def close_window():
            width = width_of_window(display, "Parse Tree Inspector")
            host.post("Parse Tree Inspector", WM_CLOSE)
            return width

        plain = java(app, *direct, *arguments)
        width = close_window()
        output, error = plain.communicate(timeout=120)
        run = app.start(subprocess.list2cmdline(arguments), limit=120)
        assert close_window() == width
        ours = run.wait()
    assert (ours.exit_code, comparable(ours.stdout), comparable(ours.stderr)) == (
        plain.returncode, comparable(output), comparable(error))
    assert (ours.boxes, ours.temp_files) == ([], []) and b"(all:1 a a a)" in ours.stdout


@pytest.fixture
def app(program):
    """H2's server on a port of its own, and a program that talks to it."""
    app, _ = program(["h2"], "org.h2.tools.Server")
    with socket.socket() as free:
        free.bind(("127.0.0.1", 0))
        app.port = free.getsockname()[1]

    def can_connect():
        with contextlib.suppress(OSError), socket.create_connection(("127.0.0.1", app.port), 5):
            return True

    def client(main_class, *arguments):
        wait_until(can_connect, "start of the server")
        done = java(app, "-cp", f"lib/{fetched('h2').name}", f"org.h2.tools.{main_class}", *arguments)
        output, error = done.communicate(timeout=120)
        assert done.returncode == 0, error
        return output

    app.client = client
    app.url = f"tcp://localhost:{app.port}"
    app.tail = f'-tcp -tcpPort {app.port} -tcpPassword x -ifNotExists -baseDir "{app.windows_folder()}"'
    return app


def ask(app):
    return app.client("Shell", "-url", f"jdbc:h2:{app.url}/./served", "-user", "sa", "-password", "", "-sql", "select 6 * 7")


def test_server(app):
    run = app.start(app.tail, limit=120)
    assert b"42" in ask(app)
    app.client("Server", "-tcpShutdown", app.url, "-tcpPassword", "x")
    result = run.wait()
    assert (result.exit_code, result.boxes, result.temp_files) == (0, [], [])
    assert result.stdout.startswith(b"TCP server running at tcp://")


def test_server_as_a_service(app, service):
    marker, log = app.folder / "asked", app.folder / "log.txt"
    with app.ryn.open("a") as file:
        file.write("ryn.stdout.redirect=log.txt\nryn.stderr.redirect=log.txt\n")

    def client():
        answer = ask(app)
        marker.write_text("done")
        return answer

    with concurrent.futures.ThreadPoolExecutor() as threads:
        answer = threads.submit(client)
        # A wait for each of the two VMs that have to start.
        waits = [f"file={windows_path(path)}" for path in (log, marker)]
        lines = service("start", "running", *waits, "stop", "ended", tail=app.tail, limit=300)
        assert b"42" in answer.result() and lines[-1] == ["ended", 0]
    # Closed as by a program that had the time for it.
    assert (app.folder / "served.mv.db").exists() and not (app.folder / "served.lock.db").exists()
