"""Tokens of the valid-VM list that are no keywords: the application's own validator class answers them."""
import subprocess

import pytest

from harness import REPOSITORY, install_vm, windows_path

JDK = "SOFTWARE\\JavaSoft\\JDK\\"
LIST = "ryn__nl__valid__vm__list"
VALIDATOR = "com.vantu.util.jvm.Validator"


@pytest.fixture(scope="session")
def verify_jar(tmp_path_factory):
    """The validator of samples/verify."""
    target = tmp_path_factory.mktemp("verify")
    subprocess.run([REPOSITORY / "samples" / "verify" / "build.sh", target], check=True, timeout=120)
    return (target / "Verify.jar").read_bytes()


@pytest.fixture
def install_jar(app):
    def install(content=b""):
        (app.folder / "jvmspecs").mkdir()
        (app.folder / "jvmspecs" / "Verify.jar").write_bytes(content)
    return install


@pytest.fixture
def stand_ins(app, registry):
    """Registered VMs whose validators answer with these exit codes."""
    def register(codes):
        for version, code in codes.items():
            home = app.folder.parent / version
            install_vm(home, exit=code)
            registry.add({JDK + version: {"JavaHome": windows_path(home)}})
    return register


def test_asks_each_candidate_once(app, stand_ins, install_jar):
    stand_ins({"11": 0, "17": 0, "21": 3})
    install_jar()
    app.configure(**{LIST: "MSJ our-token our-token"})
    result = app.run()
    assert result.boxes == []
    *validators, vm = result.records
    jar = app.windows_folder() + r"\jvmspecs\Verify.jar"
    assert sorted(record["program"].split("\\")[-3] for record in validators) == ["11", "17", "21"]
    for record in validators:
        assert record["program"].endswith(r"\bin\java.exe")
        assert record["arguments"] == ["-classpath", jar, VALIDATOR, "our-token"]
        assert not record["hasConsole"]
    assert vm["program"].endswith(r"\17\bin\javaw.exe")


def test_without_its_jar_nothing_matches(app, stand_ins):
    stand_ins({"17": 0})
    app.configure(**{LIST: "our-token"})
    result = app.run()
    assert (result.records, result.exit_code, len(result.boxes)) == ([], 106, 1)


def test_candidate_that_hangs_is_passed_over(app, stand_ins, install_jar, registry):
    stand_ins({"11": 0})
    home = app.folder.parent / "17"
    install_vm(home, wait=f"{app.folder.parent.name}-never")
    registry.add({JDK + "17": {"JavaHome": windows_path(home)}})
    install_jar()
    app.configure(**{LIST: "our-token"})
    result = app.run()
    assert result.boxes == []
    assert result.records[-1]["program"].endswith(r"\11\bin\javaw.exe")


@pytest.fixture(scope="session")
def warm_runtimes(host, runtime):
    """Homes by version; read from the disk once, which must not count against a validator's time limit."""
    homes = {"17.0.9": runtime(17), "21.0.8": runtime(21)}
    for home in homes.values():
        host.wine(home / "bin" / "java.exe", "-version")
    return homes


@pytest.mark.parametrize("tokens, expected", [("21+ 17+", "21.0.8"), ("18-20 temurin,11-17", "17.0.9")])
def test_real_runtimes(app, registry, warm_runtimes, install_jar, verify_jar, tokens, expected):
    registry.add({JDK + version: {"JavaHome": windows_path(home)} for version, home in warm_runtimes.items()})
    install_jar(verify_jar)
    # Any class will do: this one ends with 2 when it gets what an application gets.
    app.configure(ryn__class__path=r"jvmspecs\Verify.jar", ryn__nl__java__launcher__main__class=VALIDATOR,
                  ryn__nl__jvm__high="0", **{LIST: tokens})
    chosen = f'cmd: "{windows_path(warm_runtimes[expected])}\\bin\\javaw.exe" '.encode()
    # On a busy machine a runtime can need longer than the launcher waits, which says so.
    for _ in range(6):
        result = app.run(env={"JAVA_TOOL_OPTIONS": "-XX:+UseSerialGC -XX:TieredStopAtLevel=1"})
        if chosen in result.stderr or b": no answer" not in result.stderr:
            break
    assert chosen in result.stderr, result.stderr.decode("cp1252")
    assert (result.exit_code, result.boxes) == (2, [])
