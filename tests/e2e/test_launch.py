"""What reaches the VM: command line, folder, environment, handles, temporary file; and what comes back."""
import re

import pytest

from harness import LAUNCHER, NO_VALID_VM, host_path, image_bits, install_stand_in, install_vm, windows_path

OPENS = "--add-opens java.base/jdk.internal.loader=ALL-UNNAMED"
NATIVE = "--enable-native-access=ALL-UNNAMED"
LATER = "-Dsun.java2d.uiScale.enabled=false -Djava.locale.useOldISOCodes=true"
OPTION = "ryn__nl__java__option__"


def launch(app, tail="", **options):
    """A run that nobody had to answer a box for and whose VM was started as the log says."""
    result = app.run(tail, **options)
    assert result.boxes == []
    assert result.logged("cmd") == result.record["commandLine"]
    assert result.logged("cwd") == result.record["folder"]
    return result


def leading(app, result):
    """The two arguments before the application's own, with the blank behind each."""
    return f'"{windows_path(app.ryn)}" "{result.temp_path}" '.replace("\\", "/")


def options(**values):
    return {OPTION + key.replace("gc_", "garbage__collection__"): value for key, value in values.items()}


@pytest.mark.parametrize("variant, properties, expected", [
    ("sun_8", {}, ""),
    ("sun_9", {}, f"{OPENS} {LATER}"),
    ("sun_24", options(verbose="normal"), f"{OPENS} {LATER} -verbose"),
    ("sun_1_4_2", options(java__heap__size__initial="1024k", java__heap__size__max="64M", verbose="GC", debugging="On",
                          gc_background__thread="t", compiler="TRUE", gc_extent="false", verify__mode="true",
                          additional='-Da=1  -Db="x y"'),
     '-Xms1048576 -Xmx67108864 -verbose:gc -Xdebug -Xnoasyncgc -Djava.compiler=off -Xnoclassgc -Da=1  -Db="x y"'),
    ("sun_25", options(java__heap__size__max="1g", java__heap__size__initial="0", verbose="None", debugging="yes", compiler="1"),
     f"{OPENS} {NATIVE} {LATER} -Xmx1"),
])
def test_modern_command_line(app, variant, properties, expected):
    vm = install_vm(app.folder.parent / "vm", variant)
    app.configure(ryn__class__path=r"lib\a.jar;C:\b.jar", **properties)
    result = launch(app, vm=vm)
    assert result.stderr.startswith(b"cwd: ")  # and no complaint
    assert result.record["commandLine"] == (
        f'"{windows_path(vm)}"{" " if expected else ""}{expected} '
        rf'-classpath "{app.windows_folder()}\lib\a.jar;C:\b.jar;" Main {leading(app, result)}')


def test_unknown_verbosity_is_said_and_dropped(app):
    app.configure(**options(verbose="Loud"))
    result = launch(app, vm=install_vm(app.folder / "vm"))
    assert result.stderr.startswith(b"invalid verbosity selection 'loud', disabling verbosity.\r\n")
    assert "-verbose" not in result.record["commandLine"]


@pytest.mark.parametrize("name, class_path_option", [("jrew", "-cp"), ("javaw", "-classpath")])
def test_classic_command_line(app, registry, name, class_path_option):
    vm = install_vm(app.folder.parent / "old vm", names=[name])
    home = windows_path(vm.parent.parent)
    registry.add({r"SOFTWARE\JavaSoft\Java Runtime Environment\1.1": {"JavaHome": home, "MicroVersion": "8"}})
    app.configure(**options(java__heap__size__initial="512k", java__heap__size__max="2m", verbose="class", debugging="on",
                            gc_background__thread="on", compiler="on", gc_extent="none", additional="-Da=1"))
    result = launch(app, "x")
    assert result.record["commandLine"] == (
        f'"{windows_path(vm)}" -ms524288 -mx2097152 -verbose -debug -noasyncgc -nojit -noclassgc -Da=1 '
        rf'{class_path_option} "{app.windows_folder()}\app.jar;{home}\lib\classes.zip;" Main {leading(app, result)}x')


def test_microsoft_command_line(app):
    vm = app.folder.parent / "ms" / "jview.exe"
    install_stand_in(vm, "jview")
    install_stand_in(vm.with_name("wjview.exe"), "jview")
    app.configure(ryn__nl__win32__microsoftvm__min__version="3810", **options(java__heap__size__max="2m", verbose="gc",
                                                                             additional="-Da=1"))
    result = launch(app, "x", vm=vm)
    class_path = rf"{app.windows_folder()}\app.jar;"
    assert result.record["commandLine"] == (
        rf'"{windows_path(vm.with_name("wjview.exe"))}" /cp "{class_path}" Main {leading(app, result)}x')
    assert result.record["environment"]["CLASSPATH"] == class_path

    app.configure(ryn__nl__win32__microsoftvm__min__version="3811")
    result = app.run(vm=vm)
    assert (result.exit_code, result.records) == (106, [])
    assert result.box.text == f"{NO_VALID_VM}\n\nRequired Java VM : ALL"


def test_class_path_from_environment(app):
    app.configure(ryn__class__path="a.jar;$ENV_CLASSPATH$;$ENV_CLASSPATH$")
    result = launch(app, vm=install_vm(app.folder / "vm"), env={"CLASSPATH": r"c.jar;;D:\d.jar"})
    folder = app.windows_folder()
    assert rf'"{folder}\a.jar;{folder}\c.jar;D:\d.jar;{folder}\$ENV_CLASSPATH$;"' in result.record["commandLine"]


@pytest.mark.parametrize("user_dir, expected, code", [
    (None, "elsewhere", 0), (r"data\..\data", "app/data", 256), ("{absolute}", "app/data", 0xC0000005),
])
def test_working_folder_and_exit_code(app, user_dir, expected, code):
    base = app.folder.parent
    (app.folder / "data").mkdir()
    (base / "elsewhere").mkdir()
    app.configure(ryn__user__dir=user_dir and user_dir.format(absolute=windows_path(app.folder / "data")))
    result = launch(app, vm=install_vm(base / "vm"), folder=base / "elsewhere", env={"STAND_IN_EXIT": code})
    assert (result.record["folder"], result.exit_code) == (windows_path(base / expected), code)


def test_waits_for_the_vm(app, host):
    run = app.start(vm=install_vm(app.folder / "vm"), env={"STAND_IN_WAIT": "vm-may-end", "STAND_IN_EXIT": 7})
    run.wait_for_record()
    assert run.is_running()
    host.signal("vm-may-end")
    assert run.wait().exit_code == 7


def test_standard_handles_are_the_launchers(app):
    megabytes = 5_000_003
    pattern = (b"abcdefghijklmnopqrstuvwxyz" * (megabytes // 26 + 1))[:megabytes]
    result = app.run(vm=install_vm(app.folder / "vm"), stdin=b"line\r\n\x00\xff\x1a rest",
                     env={"STAND_IN_COPY": 1, "STAND_IN_STDOUT": megabytes, "STAND_IN_STDERR": megabytes})
    assert result.stdout == b"line\r\n\x00\xff\x1a rest" + pattern
    assert result.stderr.endswith(pattern)
    assert result.stderr.startswith(b"cwd: ")
    for name in ("stdin", "stdout", "stderr"):
        assert result.record[name] == "disk"
    # Named in the start-up record, and not by what the C runtime of whoever started the launcher left there.
    assert (result.record["namesHandles"], result.record["inheritedFiles"]) == ("1", "0")


def test_without_standard_handles(app):
    result = app.run("x", vm=install_vm(app.folder / "vm"), handles=False, env={"STAND_IN_EXIT": 5})
    assert (result.exit_code, result.boxes) == (5, [])
    # A windowless VM must not bring a console with it.
    assert "console" not in result.record


def test_temporary_properties(app):
    # Between bitnesses Windows changes variables of its own.
    vm = install_vm(app.folder.parent / "größe 文", bits=image_bits(LAUNCHER))
    result = app.run(vm=vm, env={"MiXed": "C:\\dir\\ü文", "plain": "a=b"})
    lines = result.temp_lines
    escaped = windows_path(vm).replace("\\", "\\\\").replace("ö", "\\u00f6").replace("ß", "\\u00df")
    assert lines[0] == "ryn.nl.current.vm=" + escaped.replace("文", "\\u6587")
    environment = result.record["environment"]
    # Three lines for each variable, in the order of the code units; nothing else.
    assert [line.split("=")[0] for line in lines[1:]] == [
        prefix + name for exact in sorted(environment)
        for prefix, name in (("ryn.nl.env.", exact.lower()), ("ryn.nl.env.", exact.upper()),
                             ("ryn.nl.env.exact_case.", exact))]
    for name in ("env.mixed", "env.MIXED", "env.exact_case.MiXed"):
        assert rf"ryn.nl.{name}=C:\\dir\\\u00fc\u6587" in lines
    assert "ryn.nl.env.PLAIN=a=b" in lines
    assert environment["MiXed"] == "C:\\dir\\ü文"


def test_starts_without_a_temporary_folder(app):
    result = launch(app, "x", vm=install_vm(app.folder / "vm"), env={"TMP": r"Z:\none", "TEMP": r"Z:\none"})
    assert result.record["arguments"][-3:] == [windows_path(app.ryn).replace("\\", "/"), "", "x"]


def test_temp_folder_option(app):
    vm = install_vm(app.folder / "vm")
    chosen, blank = app.folder.parent / "chosen", app.folder.parent / "with blank"
    chosen.mkdir()
    blank.mkdir()
    # What stands behind the switch, whether it takes effect. Quotation marks are needed and blanks split the folder.
    for text, taken in ((f'"{windows_path(chosen)}"', True), (windows_path(chosen), False), ('"C:\\none"', False),
                        (f'"{windows_path(blank)}"', False)):
        result = app.run(f"-tempdir {text} last", vm=vm)
        environment = result.record["environment"]
        temp = chosen if taken else host_path(environment["STAND_IN_RECORD"]).with_name("temp")
        assert environment["TMP"] == environment["TEMP"] == windows_path(temp), text
        assert result.temp_lines and list(temp.glob("ryn*.tmp"))
        assert (result.arguments[0], result.arguments[-1]) == ("-tempdir", "last")


def test_vm_from_the_environment(app):
    wanted, current = (install_vm(app.folder / name) for name in ("wanted", "current"))
    app.configure(ryn__nl__current__vm=windows_path(current))
    assert launch(app, vm=wanted.with_name("missing.exe")).record["program"] == windows_path(current)
    # A relative path starts at the application's folder, not at the caller's.
    relative = app.run(env={"RYN_VM": "wanted/bin/java.exe"}, folder=app.folder.parent)
    assert relative.record["program"] == windows_path(wanted)
    # It is taken even when the properties admit no such VM.
    app.configure(ryn__nl__valid__vm__list="MSJ")
    assert launch(app, vm=wanted).record["program"] == windows_path(wanted)


@pytest.mark.parametrize("name, extension", [("größe 文字", ".EXE"), ("a.b", ".scr"), ("plain", "")])
def test_program_names(make_app, name, extension):
    app = make_app("Ordner mit Löchern 文.d", name=name, extension=extension)
    app.configure()
    result = app.run("x", vm=install_vm(app.folder / "vm"))
    assert result.boxes == []
    assert result.record["arguments"][-3] == windows_path(app.folder / (name + ".ryn")).replace("\\", "/")
    # The log is in the code page of the system, where some characters of the folder do not exist.
    assert re.search(rb'\ncmd: "Z:.*L\xf6chern.*javaw.exe" .* Main .* x\r\n', result.stderr)
