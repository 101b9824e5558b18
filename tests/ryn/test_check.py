"""`ryn check` and `ryn pack check`: one row for each rule, on a folder that has nothing else to tell."""
import io
import json
import os
import re
import struct
import subprocess
import zipfile
from pathlib import Path

import pytest

RYN = os.environ["RYN_PROGRAM"]
ROOT = Path(__file__).parents[2]
SPECS = "jvmspecs/jvmspecs.properties"
SHIPPED = "Windows/resource/jre/bin/"


def run(*arguments, code):
    done = subprocess.run([RYN, *map(str, arguments)], capture_output=True, text=True, timeout=60)
    assert done.returncode == code, done.stdout + done.stderr
    return done.stdout


def jar(classes, manifest=""):
    data = io.BytesIO()
    with zipfile.ZipFile(data, "w") as archive:
        archive.writestr("META-INF/MANIFEST.MF", "Manifest-Version: 1.0\r\n" + manifest)
        for name, java in classes.items():
            archive.writestr(name + ".class", struct.pack(">IHH", 0xCAFEBABE, 0, java + 44) + bytes(40))
    return data.getvalue()


def image(machine=0x8664):
    return b"MZ".ljust(60, b"\0") + struct.pack("<I4sH18xH", 64, b"PE\0\0", machine, 0x20B if machine == 0x8664 else 0x10B)


BASE = {"App.exe": b"", "lib/app.jar": jar({"a/Main": 17})}
LINES = ["ryn.class.path=lib/app.jar", "ryn.nl.java.launcher.main.class=a.Main", "ryn.user.dir=.",
         "ryn.nl.valid.vm.list=17+", "ryn.nl.win32.java.launcher.platform=2",
         "ryn.nl.java.option.additional=-Dsun.java2d.uiScale.enabled=true"]
NOT_FOUND = ("build.option=withoutvm\nbuild.without.vm.search.option=11\n"
             "build.without.vm.not.found.download.url={url}\n"
             "build.without.vm.not.found.download.url.md5Checksum.applicable={verify}\n"
             "build.without.vm.not.found.download.url.md5Checksum.value={digest}\n")
DESCRIBED = ("build.option=withoutvm\nbuild.without.vm.search.option=10\nbuild.jvmspec.applicable=true\n"
             "build.jvmspec.total.num={count}\nbuild.jvmspec.0=one.txt\n")
PACK_VM = "ryn.nl.current.vm=" + SHIPPED + "java.exe"
STARTED = ["ryn.nl.java.launcher.main.class=com.vantu.ryn.Start", "ryn.class.path=lib/app.jar;lib/ryn-start.jar"]
STARTER = {"lib/ryn-start.jar": jar({"com/vantu/ryn/Start": 8})}


def options(text):
    return [LINES[5] + " " + text]


def pack_options(url="https://a.example/b.vm", verify="true", digest="0" * 32):
    return {SPECS: NOT_FOUND.format(url=url, verify=verify, digest=digest), "Windows/jvmspecs/x": b""}


def described(text, count=1):
    return {SPECS: DESCRIBED.format(count=count), **({"jvmspecs/one.txt": text} if text else {})}


def runtime(version=17, folder="jre/bin/", **programs):
    files = {"java.exe": image(), "javaw.exe": image()} | {f"{name}.exe": data for name, data in programs.items()}
    return {folder + name: data for name, data in files.items() if data is not None} | (
        {folder + "../release": f'JAVA_VERSION="{version}.0.1"\n'})


OWN = ["ryn.nl.current.vm=jre/bin/java.exe", "ryn.nl.valid.vm.list=JRE"]

# Expected findings, "rule:line" in App.ryn or "rule:file:line"; lines of App.ryn, which replace the line of their key,
# or go behind; other files.
ROWS = [
    ("unknown-key:7", ["ryn.nl.jvm.hihg=0"], {}),
    ("unknown-key:7", ["RYN.class.path=x"], {}),
    ("", ["my.own.key=x"], {}),
    ("unknown-key:" + SPECS + ":6", [], described("DESC: x") | {SPECS: DESCRIBED.format(count=1) + "build.x=1\n"}),
    ("repeated-key:7", ["ryn.win32.job=true", " ryn.win32.job = false"], {}),
    ("ignored-line:7", ["ryn.win32.job: true", "  # x", "! y"], {}),
    ("empty-escape:7", [r"ryn.application.name=C:\users"], {}),
    ("short-escape:7", [r"ryn.application.name=C:\u00e"], {}),
    ("java-escape:7", [r"ryn.application.name=C\:/x"], {}),
    ("last-backslash:7", ["ryn.application.name=x\\"], {}),
    ("not-latin1:7", ["ryn.application.name=größe"], {}),
    ("not-latin1:7", [b"ryn.application.name=\x80"], {}),
    ("", [b"ryn.application.name=gr\xf6\xdfe"], {}),
    ("not-latin1:1", [], {"App.ryn": b"\xef\xbb\xbfryn.win32.job=on\n" + "\n".join(LINES).encode() + b"\n"}),
    ("no-line-end:7", [], {"App.ryn": "\n".join([*LINES, "ryn.application.name=x"])}),
    ("unknown-value:7", ["ryn.win32.job=t"], {}),
    ("unknown-value:7", ["ryn.nl.java.option.debugging=yes"], {}),
    ("unknown-value:7", ["ryn.nl.designer.jvm.securefolder.check=True"], {}),
    ("unknown-value:7", ["ryn.installer.windows.ui.default=silent"], {}),
    ("unknown-value:7 unknown-value:8", ["ryn.nl.java.option.verbose=jni",
                                        "ryn.nl.java.option.garbage.collection.extent=false"], {}),
    ("number:7 number:8", ["ryn.nl.java.option.java.heap.size.max=1g", "ryn.service.stop.seconds=5s"], {}),
    ("no-launcher:1", [], {"App.exe": None}),
    ("missing-key:1 missing-key:1 missing-key:1", ["-ryn.class.path", "-ryn.nl.java.launcher.main.class",
                                                   "-ryn.nl.valid.vm.list"], {}),
    ("class-path:1", ["ryn.class.path=lib/app.jar;lib/none.jar"], {}),
    ("class-path:1 class-path:1", ["ryn.class.path=lib/*.jar;jvmspecs/*"], {}),
    ("", ["ryn.class.path=LIB\\*"], {}),
    ("class-path-quote:1 class-path:1", ['ryn.class.path=lib/app.jar;"lib/x.jar"'], {}),
    ("class-path-variable:1", ["ryn.class.path=lib/app.jar;$ENV_CLASSPATH$"], {}),
    ("outside-folder:1 outside-folder:3", ["ryn.class.path=C:/app.jar", "ryn.user.dir=../x"], {}),
    ("code-page:1", [r"ryn.class.path=lib/app.jar;lib/gr\u00f6.jar"], {"lib/grö.jar": jar({})}),
    ("bad-jar:1", ["ryn.class.path=lib/app.jar;lib/x.jar"], {"lib/x.jar": b"no"}),
    ("main-class:2", ["ryn.nl.java.launcher.main.class=a.main"], {}),
    ("", ["ryn.class.path=lib/first.jar", "ryn.nl.java.launcher.main.class=a/Main"],
     {"lib/first.jar": jar({}, "Class-Path: none.jar ap\r\n p.jar\r\n")}),
    ("", ["ryn.class.path=classes"], {"classes/a/Main.class": struct.pack(">IHH", 0xCAFEBABE, 0, 61)}),
    ("start-keys:2", STARTED, STARTER),
    ("start-keys:8", ["ryn.win32.job=true", "ryn.start.class=a.Main"], {}),
    ("start-jar:8", [*STARTED, "", "ryn.start.jar=lib/none.jar"], STARTER),
    ("start-jar:7", [*STARTED, "ryn.start.jar=lib/app.jar"], STARTER),
    ("main-class:7", [*STARTED, "ryn.start.class=a.None"], STARTER),
    ("start-jar-apart:7", [*STARTED, "ryn.start.jar=lib/b.jar"],
     STARTER | {"lib/b.jar": jar({"b/B": 8}, "Main-Class: b.B\r\n")}),
    ("manifest-options:7", [*STARTED, "ryn.start.jar=lib/app.jar"],
     STARTER | {"lib/app.jar": jar({"a/Main": 8}, "Main-Class: a.Main\r\nAdd-Opens: java.base/java.lang\r\n")}),
    ("user-dir:3", ["ryn.user.dir=data"], {}),
    ("no-user-dir:1", ["-ryn.user.dir"], {}),
    ("user-options:7", ["ryn.user.options=my.vmoptions"], {}),
    ("heap:7", ["ryn.nl.java.option.java.heap.size.max=512"], {}),
    ("heap:7", ["ryn.nl.java.option.java.heap.size.initial=65m", "ryn.nl.java.option.java.heap.size.max=64m"], {}),
    ("heap:7", ["ryn.nl.java.option.java.heap.size.initial=64"], {}),
    ("heap-bits:7", ["ryn.nl.java.option.java.heap.size.max=2048m"], {}),
    ("", [*OWN, "ryn.nl.java.option.java.heap.size.max=2048m"], runtime()),
    ("heap-bits:9", [*OWN, "", "ryn.nl.java.option.java.heap.size.max=2048m"],
     runtime(java=image(0x14C), javaw=image(0x14C))),
    ("open-quote:6", options('"-Da=b c'), {}),
    ("stray-word:6", options("-Da=b c"), {}),
    ("stray-word:6", options(r'"-Da=b \"c" -jar'), {}),
    ("class-path-option:6", options("-cp lib"), {}),
    ("relative-option:6 relative-option:2 no-user-dir:1",
     [*options("-javaagent:lib/app.jar=x"), "-ryn.user.dir", "ryn.nl.java.launcher.main.class=-jar lib/app.jar"], {}),
    ("option-file:6", options("-splash:x.png --module-path lib"), {}),
    ("refused-option:6 refused-option:7",
     [*options("-XX:MaxPermSize=64m"), "ryn.nl.java.option.garbage.collection.background.thread=on"], {}),
    ("refused-option:6 list-too-old:4", [*options("--add-modules x"), "ryn.nl.valid.vm.list=JRE"], {}),
    ("", ["ryn.nl.valid.vm.list=MSJ J1 17+"], {}),
    ("", [*options("--add-opens a/b=c"), "ryn.nl.valid.vm.list=17-21 25"], {}),
    ("ui-scale:1", ["-ryn.nl.java.option.additional"], {}),
    ("platform:1", ["-ryn.nl.win32.java.launcher.platform"], {}),
    ("platform:5", ["ryn.nl.win32.java.launcher.platform=1"], {}),
    ("valid-vm:4 valid-vm:4", ["ryn.nl.valid.vm.list=17+,JRE 25-21 17+"], {}),
    ("validator-cost:4", ["ryn.nl.valid.vm.list=17+ temurin"], {"jvmspecs/Verify.jar": b""}),
    ("list-too-old:4", ["ryn.nl.valid.vm.list=11-21"], {}),
    ("list-too-old:4", [], {"lib/app.jar": jar({"a/Main": 17, "b/B": 8}), "lib/x.jar": jar({"META-INF/versions/9/x": 9, "x": 21}),
                            "App.ryn": "\n".join([LINES[0] + ";lib/x.jar", *LINES[1:], ""])}),
    ("class-too-new:1", OWN, runtime(11)),
    ("", [*OWN, "-ryn.nl.win32.java.launcher.platform"], runtime()),
    ("current-vm:7", ["ryn.nl.current.vm=jre/bin"], runtime()),
    ("current-vm:7", ["ryn.nl.current.vm=jre/bin/java.exe"], {}),
    ("current-vm:7 list-too-old:4", OWN, {**runtime(), **described("DESC: x")}),
    ("runtime-image:7", OWN, runtime(javaw=b"\x7fELF")),
    ("runtime-bits:7 list-too-old:4", [*OWN, "ryn.win32.vm.bits=64"], runtime(javaw=image(0x14C))),
    ("runtime-program:7", OWN, runtime(javaw=None)),
    ("runtime-refused:7", OWN[:1], runtime()),
    ("half-unpacked:7 list-too-old:4", OWN, {**runtime(), "jre/ryn.unpacking": b""}),
    ("build-options:" + SPECS + ":1", [], {SPECS: "build.option=WithVM\n"}),
    ("jvmspecs-place:jvmspecs.properties:1 jvmspecs-place:Windows/jvmspecs/jvmspecs.properties:1", [],
     {"jvmspecs.properties": "", "Windows/jvmspecs/jvmspecs.properties": "", **described("DESC: x")}),
    ("no-shipped-vm:" + SPECS + ":1", [], {SPECS: "build.option=withvm\n"}),
    ("class-too-new:1", ["ryn.nl.win32.java.launcher.platform=1"],
     {SPECS: "build.option=withvm\nbuild.with.vm.search.option=21\n", **runtime(11, SHIPPED)}),
    ("platform:5", ["ryn.nl.win32.java.launcher.platform=1"], {SPECS: "build.option=withvm\n", **runtime(folder=SHIPPED)}),
    (f"fetch-every-start:{SPECS}:3", [], pack_options()),
    (f"fetch-every-start:{SPECS}:2", [],
     {"Windows/jvmspecs/x": b"", SPECS: pack_options()[SPECS].replace("=11", "=12").replace("not.found.download.url=", "direct.download.url=")
      .replace("not.found.download", "dont.search.download")}),
    ("", [PACK_VM], pack_options()),
    (f"pack-url:{SPECS}:3", [PACK_VM], pack_options(url="https://a.example/b.VM")),
    (f"pack-url:{SPECS}:3", [PACK_VM], pack_options(url="HTTPS://a.example/b.vm")),
    (f"pack-unsafe:{SPECS}:3", [PACK_VM], pack_options(url="ftp://a.example/b.vm")),
    (f"pack-digest:{SPECS}:5", [PACK_VM], pack_options(digest="A" * 32)),
    (f"no-digest:{SPECS}:3", [PACK_VM], pack_options(verify="false")),
    (f"pack-folders:{SPECS}:3", [PACK_VM], pack_options() | {"Windows/jvmspecs/x": None}),
    (f"description:{SPECS}:5", [], described(None)),
    ("description:jvmspecs/one.txt:1", [], described("nothing")),
    (f"description:{SPECS}:4", [], described("DESC: x", count=2)),
    (f"description-unused:{SPECS}:5", [], described("DESC: x", count=0)),
    ("description-system:jvmspecs/one.txt:1", [], described("PLATFORM_HINT:\nDarwin\n/:\n")),
    ("open-block:jvmspecs/one.txt:2", [], described("# x\nPLATFORM_HINT:\nWindows\nPATH_HINT:\njre\n/:\n")),
    ("hint:jvmspecs/one.txt:3", [], described("PATH_HINT:\n\\HKEY_LOCAL_MACHINE\\SOFTWARE\n\\HKLM\\SOFTWARE\n/:\n")),
]


def write(folder, lines, files):
    own = [line if isinstance(line, bytes) else line.encode() for line in lines]
    result = []
    for line in map(str.encode, LINES):
        key = line.split(b"=")[0]
        changed = [other for other in own if other.lstrip(b"-").split(b"=")[0] == key]
        result.append((b"" if changed[0].startswith(b"-") else changed[0]) if changed else line)
        own = [other for other in own if other not in changed]
    for name, content in (BASE | {"App.ryn": b"\n".join(result + own) + b"\n"} | files).items():
        path = (folder / name).resolve()
        if content is None:
            continue
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content.encode() if isinstance(content, str) else content)


def found(report, folder):
    names = (f"{each['rule']}:{os.path.relpath(each['file'], folder)}:{each['line']}" for each in report["findings"])
    return sorted(name.replace(":App.ryn:", ":") for name in names)


@pytest.mark.parametrize("expected, lines, files", ROWS, ids=range(len(ROWS)))
def test_rules_of_folders(tmp_path, expected, lines, files):
    write(tmp_path, lines, files)
    rules = {rule["id"]: rule["defaultConfiguration"]["level"] for rule in all_rules(tmp_path)}
    bad = any(rules[name.split(":")[0]] != "note" for name in expected.split())
    report = json.loads(run("check", tmp_path, "--json", code=int(bad)))
    assert found(report, tmp_path) == sorted(expected.split()), report
    assert report["errors"] + report["warnings"] + report["notes"] == len(report["findings"])


def entry(name, data=b"x", attributes=0x20, system=0, flags=0):
    info = zipfile.ZipInfo("x")
    info.filename, info.external_attr, info.create_system, info.flag_bits = name, attributes, system, flags
    return info, data


def archive(*entries):
    data = io.BytesIO()
    with zipfile.ZipFile(data, "w") as out:
        for each in entries:
            out.writestr(*each)
    return data.getvalue()


def pack(*entries):
    runtime = archive(*entries, entry("bin/java.exe", image()), entry("bin/javaw.exe", image()))
    return archive(entry("vm.zip", runtime), entry("vm.properties", b""))


def encrypted():
    data = bytearray(archive(entry("a"), entry("bin/java.exe", image()), entry("bin/javaw.exe", image())))
    for signature, offset in (b"PK\3\4", 6), (b"PK\1\2", 8):
        data[data.index(signature) + offset] |= 1
    return archive(entry("vm.zip", bytes(data)))


# Expected findings, "rule:line" in vm.zip or "rule::line" in the pack.
PACKS = [
    ("", "jre.vm", pack(entry("lib/", b"", 0x10), entry("größe"))),
    ("pack-name::1", "jre.VM", pack()),
    ("pack-archive::1", "jre.vm", b"no"),
    ("pack-archive::1", "jre.vm", archive(entry("bin/java.exe", image()))),
    ("pack-archive:1", "jre.vm", archive(entry("vm.zip", b"no"))),
    ("pack-extra::1", "jre.vm", archive(entry("readme"), entry("vm.zip", archive(
        entry("jre/bin/java.exe", image()), entry("jre/bin/javaw.exe", image()))))),
    ("pack-java:1 pack-java:1", "jre.vm", archive(entry("vm.zip", archive(entry("jdk/bin/java.exe", image()))))),
    ("runtime-image:1 runtime-image:1", "jre.vm", archive(entry("vm.zip", archive(
        entry("bin/java.exe"), entry("bin/javaw.exe"))))),
    ("entry-changed:1 entry-changed:2", "jre.vm", pack(entry("C:/a"), entry("b/../c"))),
    ("entry-leaves:1", "jre.vm", pack(entry("../a"))),
    ("entry-name:1 entry-name:2", "jre.vm", pack(entry("lib/nul.txt"), entry("a?"))),
    ("entry-stream:1", "jre.vm", pack(entry("lib/a:b"))),
    ("entry-twice:2 entry-twice:3", "jre.vm", pack(entry("modules"), entry("MODULES"), entry("Modules/x"))),
    ("entry-long:1", "jre.vm", pack(entry("lib/" + "x" * 200))),
    ("entry-attributes:1", "jre.vm", pack(entry("a", attributes=0o100444 << 16, system=3), entry("b", attributes=1))),
    ("entry-folder:1", "jre.vm", pack(entry("lib", attributes=0x10))),
    ("entry-damaged:1 entry-damaged::1", "jre.vm", pack(entry("a", b"content")).replace(b"content", b"CONTENT", 1)),
    ("entry-encrypted:1", "jre.vm", encrypted()),
]


@pytest.mark.parametrize("expected, name, data", PACKS, ids=range(len(PACKS)))
def test_rules_of_packs(tmp_path, expected, name, data):
    (tmp_path / name).write_bytes(data)
    report = json.loads(run("pack", "check", tmp_path / name, "--json", code=1 if expected else 0))
    findings = [f"{each['rule']}:{'' if each['file'].endswith('vm.zip') else ':'}{each['line']}" for each in report["findings"]]
    assert sorted(findings) == sorted(expected.split()), report
    if not expected:
        assert [(each["name"], each["folder"], each["size"]) for each in report["entries"][:2]] == [("lib/", True, 0), ("größe", False, 1)]


def sarif(folder, code):
    log = json.loads(run("check", folder, "--sarif", code=code))
    assert log["version"] == "2.1.0" and len(log["runs"]) == 1
    return log["runs"][0]


RULES = []


def all_rules(folder):
    if not RULES:
        other = folder.parent / "rules"
        write(other, [], {})
        RULES.extend(sarif(other, 0)["tool"]["driver"]["rules"])
    return RULES


def test_every_rule_is_documented_and_has_a_row(tmp_path):
    rules = {rule["id"]: rule["defaultConfiguration"]["level"] for rule in all_rules(tmp_path)}
    told = dict(re.findall(r"^\| `([a-z0-9-]+)` \| (error|warning|note) \|", (ROOT / "docs/check.md").read_text(), re.M))
    assert told == rules
    rows = " ".join(row[0] for row in ROWS + PACKS)
    assert {name.split(":")[0] for name in rows.split()} == set(rules)


def test_every_key_of_the_launcher_is_known(tmp_path):
    sources = "".join((ROOT / name).read_text() for name in (
        "properties/keys.h", "properties/keys.cpp", "provision/build_options.cpp", "java/src/com/vantu/ryn/Program.java",
        "java/src/com/vantu/ryn/Start.java", "java/src/com/vantu/ryn/Logs.java"))
    keys = set(re.findall(r'"((?:ryn|build)\.[\w.]*\w)"', sources))
    # What the launcher itself tells the Java side, and halves of keys.
    keys -= set(re.findall(r'"(ryn\.(?:launch\.(?!arguments)[\w.]+|control-key))"', sources)) | {"ryn.control"}
    build = {key for key in keys if key.startswith("build.")} - {"build.jvmspec"}
    build = {key + suffix for key in build for suffix in ([".applicable", ".value"] if key.endswith("Checksum") else [""])}
    write(tmp_path, [key + "=" for key in keys - build if key.startswith("ryn.")],
          {SPECS: "".join(key + "=\n" for key in build)})
    report = json.loads(run("check", tmp_path, "--json", code=1))
    assert len(keys) > 40 and [each for each in report["findings"] if each["rule"] == "unknown-key"] == []


def test_forms_of_the_report(tmp_path):
    write(tmp_path, ["ryn.win32.jbo=true"], {})
    text = run("check", tmp_path / "App.ryn", code=1)
    assert text == (f'{tmp_path}/App.ryn:7: warning: nothing reads "ryn.win32.jbo"; is it "ryn.win32.job"? '
                    "[unknown-key]\n")
    log = sarif(tmp_path, 1)
    [result] = log["results"]
    place = result["locations"][0]["physicalLocation"]
    assert (log["tool"]["driver"]["rules"][result["ruleIndex"]]["id"], result["ruleId"], result["level"]) == (
        "unknown-key", "unknown-key", "warning")
    assert place == {"artifactLocation": {"uri": (tmp_path / "App.ryn").as_uri()}, "region": {"startLine": 7}}
    assert result["message"]["text"] in text
    (tmp_path / "Other.ryn").touch()
    for folder in tmp_path, tmp_path / "lib", tmp_path / "none":
        run("check", folder, code=2)
