"""Programs from Maven Central as they are: through the launcher and ryn-start.jar as by java itself. Skipped until
`tools/setup programs` has fetched them."""
import re
import shutil
import subprocess

import pytest

from harness import BUILD, REPOSITORY, windows_path

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


@pytest.fixture
def program(make_app):
    """program(jars, main class): an application of these jars."""
    app = make_app("programs ü")
    shutil.copy(BUILD / "ryn-start.jar", app.folder)

    def make(jars, main_class):
        names = [fetched(name).name for name in jars]
        for name in names:
            shutil.copy(PROGRAMS / name, app.folder)
        start = {"ryn__start__class": main_class} if main_class else {"ryn__start__jar": names[0]}
        app.configure(ryn__class__path=";".join(["ryn-start.jar", *names]), ryn__launch__arguments="exact",
                      ryn__nl__java__launcher__main__class="com.vantu.ryn.Start", **start)
        direct = ["-cp", ";".join(names), main_class] if main_class else ["-jar", names[0]]
        return app, direct
    return make


def comparable(text):
    """Without what differs from run to run, and what the launcher and Wine say."""
    lines = [line for line in text.decode("cp1252").splitlines() if not line.startswith(("cwd: ", "cmd: ", "wine: "))]
    return re.sub(r"\d+ (ms|seconds?)|\(\d+ row.*?\)|0x[0-9a-f]+", "", "\n".join(lines))


@pytest.mark.parametrize("name", CASES)
def test_runs_as_by_java_itself(program, host, runtime, name):
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
    java = runtime(17) / "bin" / "java.exe"

    def outcome(run, output, error):
        made = sorted(str(path.relative_to(work)) for path in work.rglob("*") if path.is_file())
        shutil.rmtree(work / "out", ignore_errors=True)
        (work / "out.txt").unlink(missing_ok=True)
        return run, comparable(output), comparable(error), made

    plain = subprocess.run(["wine", java, *direct, *arguments], cwd=work, env=host.environment, stdin=subprocess.DEVNULL,
                           capture_output=True, timeout=120)
    expected = outcome(plain.returncode, plain.stdout, plain.stderr)
    ours = app.run(subprocess.list2cmdline(arguments), vm=java, limit=120)
    assert outcome(ours.exit_code, ours.stdout, ours.stderr) == expected
    assert (ours.boxes, ours.exit_code, ours.temp_files) == ([], code, [])
