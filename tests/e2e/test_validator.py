"""Tokens of the valid-VM list that are no keywords: the application's own validator class answers them."""
import subprocess

import pytest

from harness import REPOSITORY, install_vm, windows_path

JDK = "SOFTWARE\\JavaSoft\\JDK\\"
LIST = "ryn__nl__valid__vm__list"
VALIDATOR = "com.vantu.util.jvm.Validator"


@pytest.fixture
def validate(app, registry):
    """validate(jar, VMs): registers stand-ins, whose validators do as told, and launches."""
    def run(jar, vms, tokens="our-token\\ our-token\\ MSJ"):
        for version, settings in vms.items():
            install_vm(app.folder.parent / version, **settings)
        registry.add({JDK + version: {"JavaHome": windows_path(app.folder.parent / version)} for version in vms})
        if jar:
            (app.folder / "jvmspecs").mkdir()
            (app.folder / "jvmspecs" / "Verify.jar").touch()
        app.configure(**{LIST: tokens})
        return app.run(folder=app.folder.parent)
    return run


def test_asks_each_candidate_once(app, validate):
    result = validate(True, {"11": {"exit": 0}, "17": {"exit": 0}, "21": {"exit": 3},
                             # Hangs.
                             "25": {"wait": f"{app.folder.parent.name}-never"}})
    assert result.boxes == []
    *validators, vm = result.records
    jar = app.windows_folder() + r"\jvmspecs\Verify.jar"
    assert sorted(record["program"].split("\\")[-3] for record in validators) == ["11", "17", "21", "25"]
    for record in validators:
        assert record["program"].endswith(r"\bin\java.exe")
        assert record["arguments"] == ["-classpath", jar, VALIDATOR, "our-token\\"]
        assert "console" not in record
        # Whoever started the launcher elsewhere.
        assert record["folder"] == app.windows_folder()
    assert vm["program"].endswith(r"\17\bin\javaw.exe")
    # Behind the one that is chosen nobody is asked.
    app.configure(ryn__nl__current__vm=r"..\17\bin\java.exe", **{LIST: "our-token"})
    assert [record["program"].split("\\")[-3] for record in app.run().records] == ["17", "17"]


def test_without_its_jar_nothing_matches(validate):
    result = validate(False, {"17": {"exit": 0}})
    assert (result.records, result.exit_code, len(result.boxes)) == ([], 106, 1)


def test_real_runtimes(host, app, registry, runtime):
    homes = {"17.0.9": runtime(17), "21.0.8": runtime(21)}
    for home in homes.values():
        # Read from the disk once, which must not count against a validator's time limit.
        host.wine(home / "bin" / "java.exe", "-version")
    registry.add({JDK + version: {"JavaHome": windows_path(home)} for version, home in homes.items()})
    (app.folder / "jvmspecs").mkdir()
    subprocess.run(["sh", REPOSITORY / "samples" / "verify" / "build.sh", app.folder / "jvmspecs"], check=True, timeout=120)
    for tokens, expected in (("21+ 17+", "21.0.8"), ("18-20 temurin,11-17", "17.0.9")):
        # Any class will do: this one ends with 2 when it gets what an application gets.
        app.configure(ryn__class__path=r"jvmspecs\Verify.jar", ryn__nl__java__launcher__main__class=VALIDATOR,
                      ryn__nl__jvm__high="0", **{LIST: tokens})
        chosen = f'cmd: "{windows_path(homes[expected])}\\bin\\javaw.exe" '.encode()
        # On a busy machine a runtime can need longer than the launcher waits, which says so.
        for _ in range(6):
            result = app.run(env={"JAVA_TOOL_OPTIONS": "-XX:+UseSerialGC -XX:TieredStopAtLevel=1"})
            if chosen in result.stderr or b": no answer" not in result.stderr:
                break
        assert chosen in result.stderr, result.stderr.decode("cp1252")
        assert (result.exit_code, result.boxes) == (2, [])
