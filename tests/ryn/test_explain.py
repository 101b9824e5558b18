"""`ryn explain` on records of machines, as this file makes them up."""
import json
import os
import pathlib
import re
import subprocess

import pytest

RYN = os.environ["RYN_PROGRAM"]
HOME = "C:\\Program Files\\App"
JDK = "\\HKEY_LOCAL_MACHINE\\SOFTWARE\\JavaSoft\\JDK"
KEYS = {"ryn.class.path": "app.jar", "ryn.nl.java.launcher.main.class": "Main", "ryn.nl.valid.vm.list": "ALL",
        "ryn.nl.win32.java.launcher.platform": "2"}
LIST, HIGH, BITS, PLATFORM, CHECK, CURRENT = (
    "ryn.nl.valid.vm.list", "ryn.nl.jvm.high", "ryn.win32.vm.bits", "ryn.nl.win32.java.launcher.platform",
    "ryn.nl.designer.jvm.securefolder.check", "ryn.nl.current.vm")


def merged(*parts):
    result = {}
    for part in parts:
        for name, value in part.items():
            both = isinstance(value, dict) and name in result
            result[name] = merged(result[name], value) if both else value
    return result


def vm(home, product=(17, 0, 1, 0), bits=64):
    programs = [f"{home}\\bin\\{name}.exe" for name in ("java", "javaw")]
    return {"paths": dict.fromkeys(programs, "file"), "bits": dict.fromkeys(programs, bits),
            "versions": {program: {"product": product} for program in programs}}


def registered(**homes):
    """Subkeys of the JDK's key and their JavaHome."""
    names = {name.lstrip("_").replace("_", "."): home for name, home in homes.items()}
    return {"registry": {JDK: {"subkeys": list(names)}} |
            {f"{JDK}\\{name}": {"values": {"JavaHome": home} if home else {}} for name, home in names.items()}}


def environment(**variables):
    return {"environment": variables}


TWO = merged(vm("C:\\17"), vm("C:\\21", (21, 0, 3, 0)), registered(_17_0_1="C:\\17", _21_0_3="C:\\21"))
THREE = merged(*(vm(f"C:\\{home}") for home in "123"), environment(PATH="C:\\1\\bin;C:\\2\\bin;C:\\3\\bin"),
               {"paths": {f"C:\\{home}\\bin": "folder" for home in "123"},
                "validator": {"C:\\1\\bin\\java.exe": {"x": "rejected"}, "C:\\2\\bin\\java.exe": {"x": "timedOut"}}})
PACK = {"build.option": "withoutvm", "build.without.vm.search.option": "11", "build.jvmspec.applicable": "true",
        "build.jvmspec.total.num": "2", "build.jvmspec.0": "none.txt", "build.jvmspec.1": "mac.txt",
        "build.without.vm.not.found.download.url": "https://example.com/jre.vm"}


@pytest.fixture
def explain(tmp_path):
    """explain(keys, record, files, arguments...): the report, once as JSON and once as text."""
    def run(keys, record, files=(), *arguments):
        folder = tmp_path / "App"
        for name, content in {"App.ryn": KEYS | keys, **dict(files)}.items():
            path = folder / name
            path.parent.mkdir(parents=True, exist_ok=True)
            lines = content if isinstance(content, str) else "".join(f"{k}={v}\n" for k, v in content.items())
            path.write_text(lines, "latin-1")
        machine = tmp_path / "machine.json"
        machine.write_text(json.dumps({"schema": 1} | record))
        done = [subprocess.run([RYN, "explain", folder, *form, "--machine", machine, *arguments], capture_output=True,
                               text=True, timeout=60) for form in (["--json"], [])]
        assert done[0].returncode == done[1].returncode
        report = json.loads(done[0].stdout)
        assert done[0].returncode == (0 if report["launched"] else 1), done[0].stderr
        for entry in report["considered"]:
            assert entry["where"] in done[1].stdout
        return report
    return run


# Each outcome at least once: keys, record, files of the application, arguments, the record's lines.
OUTCOMES = [
    ({}, TWO, {}, [], "registry outranked, registry chosen"),
    ({HIGH: "0"}, TWO, {}, [], "registry chosen, registry notFirst"),
    ({}, merged(TWO, environment(RYN_VM="C:\\17\\bin\\java.exe")), {}, [], "environment chosen"),
    ({}, merged(TWO, environment(RYN_VM="C:\\17\\bin\\java.exe")), {}, ["--all"],
     "environment chosen, registry notReached, registry notReached"),
    ({}, environment(RYN_VM="D:\\none.exe"), {}, [], "environment missing"),
    ({CURRENT: "jre/bin/java.exe"}, {"paths": {f"{HOME}\\jre\\ryn.unpacking": "file"}}, {}, [],
     "currentVm halfUnpacked"),
    ({}, merged(vm("C:\\17"), registered(_17_0_1="C:\\17", _17_0_01="C:\\17", _18="", _19="C:\\gone")), {}, [],
     "registry chosen, registry duplicate, registry unreadableKey, registry noUsableHome"),
    ({LIST: "22+ MSJ"}, TWO, {}, [], "registry noMatchingToken, registry noMatchingToken"),
    ({LIST: "x"}, THREE, {"jvmspecs/Verify.jar": ""}, [],
     "path validatorRejected, path validatorRejected, path validatorTimedOut, path validatorTimedOut, "
     "path validatorNotStarted, path validatorNotStarted"),
    ({PLATFORM: "1"}, TWO, {}, [], "registry otherBitness, registry otherBitness"),
    ({BITS: "32"}, TWO, {}, [], "registry wrongBits, registry wrongBits"),
    ({CHECK: "true"}, merged(TWO, {"unsafeFolders": {"c:\\21\\BIN": True}}), {}, [],
     "registry chosen, registry unsafeFolder"),
    ({}, {}, {"jvmspecs/jvmspecs.properties": PACK, "jvmspecs/mac.txt": "PLATFORM_HINT:\nDarwin\n/:\n"}, [],
     "description noDescription, description otherSystem, pack notFetched"),
    # What today's folder brings along counts, in any letter case; the record knows nothing of it.
    ({CURRENT: "jre/bin/java.exe"}, {}, {"JRE/bin/Java.exe": ""}, [], "currentVm chosen"),
]


@pytest.mark.parametrize("keys, record, files, arguments, told", OUTCOMES)
def test_every_reason_is_told(explain, keys, record, files, arguments, told):
    report = explain(keys, record, files, *arguments)
    outcomes = [f"{entry['source']} {entry['outcome']}" for entry in report["considered"]]
    assert ", ".join(outcomes) == told
    assert report["chosen"] == next((i for i, each in enumerate(outcomes) if "chosen" in each), None)
    assert report["exitCode"] == (None if "chosen" in told or "notFetched" in told else 106)


def test_no_reason_is_missing_above():
    root = pathlib.Path(__file__).parents[2]
    source = (root / "vmsearch" / "vm_names.cpp").read_text()
    names = re.findall(r'L"(\w+)"', source[source.index("nameOf(VmOutcome"):])
    assert set(names) == {word.split()[1] for row in OUTCOMES for word in row[4].split(", ")} and len(names) == 19
    documented = (root / "docs" / "explain.md").read_text()
    assert all(f"`{name}`" in documented for name in names)


def test_the_whole_report(explain):
    keys = {"ryn.nl.java.option.java.heap.size.max": "512m", "ryn.user.options": "%CONF%/vm.txt", LIST: "17"}
    record = merged(TWO, {"program": {"path": HOME + "\\Old.exe"}, "texts": {"C:\\Conf\\vm.txt": "-Duser\n"},
                          "startFolder": "D:\\Start", "paths": {"D:\\Start": "folder"}},
                    environment(CONF="C:\\Conf", TMP="C:\\Temp", ProgramFiles="C:\\Program Files"))
    report = explain(keys, record, {}, "--all", "--", "-i", "console", "a b")
    entry = {"source": "registry", "where": JDK + "\\17.0.1", "home": "C:\\17", "executable": None, "kind": "JDK",
             "vendor": "Sun", "version": [17, 0, 1], "bits": 64, "outcome": "chosen"}
    other = entry | {"where": JDK + "\\21.0.3", "home": "C:\\21", "version": [21, 0, 3],
                     "outcome": "noMatchingToken"}
    options = [("launcher", "--add-opens java.base/jdk.internal.loader=ALL-UNNAMED"),
               ("launcher", "-Dsun.java2d.uiScale.enabled=false"),
               ("launcher", "-Djava.locale.useOldISOCodes=true"), ("properties", "-Xmx536870912"), ("user", "-Duser")]
    assert report == {
        "schema": 1, "application": {"path": HOME + "\\App.exe", "version": None, "launcher": None},
        "properties": {"path": HOME + "\\App.ryn", "values": KEYS | keys}, "jvmspecs": None,
        "wanted": {"tokens": ["17"], "platform": 2, "bits": None, "highest": True},
        "considered": [entry, other], "onMachine": [], "chosen": 0, "program": "C:\\17\\bin\\java.exe",
        "commandLine": ["C:\\17\\bin\\java.exe", *(word for _, text in options for word in text.split()),
                        "-classpath", HOME + "\\app.jar;", "Main", HOME.replace("\\", "/") + "/App.ryn",
                        "C:/Temp/ryn0.tmp", "-i", "console", "a b"],
        "options": [{"origin": origin, "text": text} for origin, text in options],
        "workingFolder": "D:\\Start", "launched": True, "fetches": None, "exitCode": None,
        "warnings": ["App.exe is not in the folder."], "helpsNow": [], "forMaker": []}


LONG = {"ryn.nl.java.option.additional": "-Da=" + "a" * 32000}
VENDOR = merged(vm("C:\\Program Files\\Zulu\\21", (21, 0, 1, 0)), environment(ProgramFiles="C:\\Program Files"),
                {"subfolders": {"C:\\Program Files\\Zulu": {"*": ["21"]}}})


@pytest.mark.parametrize("keys, record, member, told", [
    (LONG, TWO, "warnings", "from 32767 on"), ({"ryn.class.path": "\\u5fdc.jar"}, TWO, "warnings", "応.jar, which Java"),
    ({"ryn.class.path": "\\u5fdc.jar", "ryn.win32.short.paths": "true"},
     merged(TWO, {"paths": {HOME + "\\応.jar": "file"}}), "warnings", "not started: the code page"),
    ({}, merged(vm("C:\\17", bits=32), registered(_17="C:\\17")), "warnings", "32-bit"),
    ({"ryn.user.dir": "data"}, TWO, "warnings", "267"), ({"ryn.nl.java.option.verbose": "x"}, TWO, "warnings", "verbosity"),
    ({"ryn.user.options": "a.txt"}, merged(TWO, {"elevated": True}), "warnings", "more rights"),
    ({}, {"paths": {"C:\\x\\jview.exe": "file"}} | environment(RYN_VM="C:\\x\\jview.exe"), "warnings", "wjview.exe is not there"),
    ({CHECK: "true"}, merged(vm("C:\\17"), {"unsafeFolders": {"C:\\17\\bin": True}}, environment(RYN_VM="C:\\17\\bin\\java.exe")),
     "warnings", "not started: ordinary users"),
    ({}, VENDOR, "helpsNow", "RYN_VM to C:\\Program Files\\Zulu\\21\\bin\\java.exe"), ({}, VENDOR, "forMaker", "--vendors"),
    ({LIST: "22+", BITS: "64"}, VENDOR, "helpsNow", "Install a Java (22+, 64-bit)"),
    ({PLATFORM: "1"}, TWO, "forMaker", "platform=2"), ({LIST: "9"}, TWO, "forMaker", "now 9"),
    ({BITS: "32"}, TWO, "forMaker", "needs 32 bits"), ({}, environment(RYN_VM="D:\\x"), "helpsNow", "D:\\x"),
    ({CURRENT: "jre/bin/java.exe"}, {"paths": {f"{HOME}\\jre\\ryn.unpacking": "file"}}, "helpsNow", "Delete"),
])
def test_what_is_said_of_a_launch(explain, keys, record, member, told):
    assert any(told in sentence for sentence in explain(keys, record)[member])


@pytest.mark.parametrize("record, told", [
    ([], "schema 1"), ({"schema": 2}, "schema 1"), ({"paths": []}, '"paths"'), ({"versions": {"a": {"file": [1]}}}, '"versions"'),
    ({"environment": {"a": 1}}, "type must be string"), (None, "--machine"),
])
def test_what_is_no_record_is_refused(tmp_path, record, told):
    (tmp_path / "App.ryn").write_text("ryn.class.path=a\nryn.nl.java.launcher.main.class=a\nryn.nl.valid.vm.list=a\n")
    machine = tmp_path / "machine.json"
    machine.write_text(json.dumps({"schema": 1} | record if isinstance(record, dict) else record))
    options = [] if record is None else ["--machine", machine]
    done = subprocess.run([RYN, "explain", tmp_path, *options], capture_output=True, text=True, timeout=60)
    assert done.returncode == 2 and told in done.stderr
