"""Runs the launcher as a user would: in a folder of its own, under Wine or on Windows itself, under a time limit.

What only the Windows side can know (the raw command line, all 32 bits of the exit code, message boxes) comes
from the fixture program runner.exe; what the launcher handed to a VM comes from a stand-in VM's record.
"""
import collections
import contextlib
import ctypes
import dataclasses
import itertools
import os
import pathlib
import shutil
import struct
import subprocess
import tempfile
import time

import pytest

REPOSITORY = pathlib.Path(__file__).resolve().parents[2]
BUILD = REPOSITORY / os.environ.get("RYN_BUILD_DIR", "build/release")
FIXTURES = BUILD / "tests" / "fixtures"
FIXTURES_32 = REPOSITORY / "build" / "release-x86" / "tests" / "fixtures"
# Another launcher, such as one that `ryn make` branded, can take the tests, too.
LAUNCHER = pathlib.Path(os.environ.get("RYN_LAUNCHER", BUILD / "launcher.exe"))
RYN = REPOSITORY / os.environ.get("RYN_PROGRAM", "build/checked/ryn/ryn")
RUNTIMES = REPOSITORY / "build" / "runtimes"

ON_WINDOWS = os.name == "nt"
LIMIT_SECONDS = 60
SYSTEM_PATH = r"C:\windows\system32;C:\windows"

DEBIAN_WINE_64 = "/usr/lib/wine/wine64"

# Texts of the boxes that end a launch, and their title.
ERROR_TITLE = "Kestrune Error"
NO_VALID_VM = ("Could not find a valid Java virtual machine to load.\n\n"
               "You may need to reinstall a supported Java virtual machine.")


def image_bits(program):
    """32 or 64, as the machine in its header says."""
    image = pathlib.Path(program).read_bytes()
    (machine,) = struct.unpack_from("<H", image, struct.unpack_from("<I", image, 0x3C)[0] + 4)
    return {0x14C: 32, 0x8664: 64}[machine]


def own_fixtures():
    """Those of the launcher's own bitness, for what is loaded into it. Stand-in VMs have 64 bits, as the VMs of today,
    unless a test asks for others."""
    return FIXTURES if image_bits(LAUNCHER) == 64 else FIXTURES_32


def windows_path(path):
    """A path of this host as Windows programs see it."""
    return str(path) if ON_WINDOWS else "Z:" + str(path).replace("/", "\\")


def host_path(path):
    """The way back, for paths on drive Z."""
    if ON_WINDOWS:
        return pathlib.Path(path)
    path = path.replace("\\", "/")
    assert path[:2].upper() == "Z:", path
    return pathlib.Path(path[2:])


def wait_until(condition, what, seconds=LIMIT_SECONDS):
    """For things that announce themselves by nothing but a file; returns what `condition` gave."""
    end = time.monotonic() + seconds
    while not (found := condition()):
        assert time.monotonic() < end, f"{what}: not within {seconds} s"
        time.sleep(0.02)
    return found


def read_facts(path, *firsts):
    """What a fixture program told: its facts as dicts of lists of texts, one for each fact named in `firsts`."""
    words = path.read_bytes().decode("utf-16-le", "surrogatepass").split("\0") if path.exists() else []
    found = []
    for name, value in zip(words[::2], words[1::2]):
        if name in firsts:
            found.append(collections.defaultdict(list))
        found[-1][name].append(value)
    return found


def read_records(path):
    """What the stand-in VMs that recorded in this file were given."""
    return [{"arguments": facts.pop("argument", [])} | {name: value for name, (value,) in facts.items() if name[0] != "="} |
            {"environment": {name[1:]: value for name, (value,) in facts.items() if name[0] == "="}}
            for facts in read_facts(path, "program")]


def ryn(*arguments, code=0):
    """Runs the program for makers; returns its output, or what it complained of."""
    done = subprocess.run([RYN, *map(str, arguments)], capture_output=True, text=True, timeout=120)
    assert done.returncode == code, done.stdout + done.stderr
    return done.stdout or done.stderr


class _Host:
    """The Windows that programs run on."""

    def __init__(self):
        self.own_keys = set()
        self.newest_run = None

    def wine(self, *arguments, limit=120, check=True):
        """Runs a Windows program to its end; its output goes nowhere, its exit code is returned."""
        done = subprocess.run(self.command(*arguments), env=self.environment, timeout=limit, **self._no_streams())
        assert not check or done.returncode == 0, (arguments, done.returncode)
        return done.returncode

    def signal(self, event, check=True):
        """Sets a named event, such as the one that a stand-in VM waits for; says whether there was one."""
        return self._request(f"signal={event}", check)

    def post(self, title, message, wide=0, long=0):
        """Posts a message to a window, as any program of the desktop can."""
        self._request(f"post={message} {wide} {long} {title}")

    def _request(self, line, check=True):
        with tempfile.TemporaryDirectory() as folder:
            request = pathlib.Path(folder) / "request"
            request.write_bytes(f"{line}\n".encode("utf-16-le"))
            return self.wine(FIXTURES / "runner.exe", windows_path(request), check=check) == 0

    @staticmethod
    def _no_streams():
        return dict.fromkeys(("stdin", "stdout", "stderr"), subprocess.DEVNULL)


class WindowsHost(_Host):
    """Windows itself, with the desktop of whoever runs the tests."""

    def __init__(self):
        super().__init__()
        self.environment = dict(os.environ)

    def __enter__(self):
        return self

    def __exit__(self, *error):
        pass

    def command(self, program, *arguments):
        return [str(program), *map(str, arguments)]

    def elevates_all(self):
        return bool(ctypes.windll.shell32.IsUserAnAdmin())

    def system_folder(self, bits=64):
        return pathlib.Path(os.environ["SystemRoot"]) / ("System32" if bits == 64 else "SysWOW64")


class WineHost(_Host):
    """A Wine prefix and a display, both private to the tests."""

    def __init__(self):
        super().__init__()
        self._exit = contextlib.ExitStack()
        self.prefix = pathlib.Path(os.environ.get("WINEPREFIX", REPOSITORY / "build" / "wine"))
        # Little of this host may show in the environments that the tests look at.
        keep = ("PATH", "HOME", "USER", "LANG", "DISPLAY", "XAUTHORITY")
        self.environment = {name: os.environ[name] for name in keep if name in os.environ}
        # File names are UTF-8. Without Mono and Gecko a fresh prefix asks nobody to install them.
        self.environment.update(LC_ALL="C.UTF-8", WINEPREFIX=str(self.prefix), WINEDEBUG="-all",
                                WINEDLLOVERRIDES="mscoree,mshtml=")
        # Where Wine for 32 bits is installed, Debian's script takes that, and with it the `reg` of 32 bits, say.
        self._wine = "wine"
        if os.access(DEBIAN_WINE_64, os.X_OK):
            self._wine = self.environment["WINELOADER"] = DEBIAN_WINE_64

    def __enter__(self):
        with contextlib.ExitStack() as stack:
            if "DISPLAY" not in self.environment:
                self._start_display(stack)
            self.prefix.mkdir(parents=True, exist_ok=True)
            # One server for all tests; without it every start would pay for booting Windows.
            server = subprocess.run(["wineserver", "-p"], env=self.environment, **self._no_streams())
            if server.returncode == 0:  # else one is running already, which is not ours to end
                stack.callback(lambda: subprocess.run(["wineserver", "-k"], env=self.environment))
            if not (self.prefix / "system.reg").exists():
                self.wine("wineboot", "-i")
            # No window manager runs here, and Wine would wait seconds for it whenever a window goes.
            self.wine("reg", "add", r"HKCU\Software\Wine\X11 Driver", "/v", "Managed", "/d", "N", "/f")
            self._exit = stack.pop_all()
        return self

    def __exit__(self, *error):
        self._exit.close()

    def _start_display(self, stack):
        reader, writer = os.pipe()
        display = subprocess.Popen(["Xvfb", "-displayfd", str(writer), "-screen", "0", "1280x1024x24", "-nolisten",
                                    "tcp", "-noreset"], pass_fds=[writer], **self._no_streams())
        stack.callback(display.wait, 20)
        stack.callback(display.terminate)
        os.close(writer)
        with os.fdopen(reader) as number:
            self.environment["DISPLAY"] = ":" + number.readline().strip()

    def command(self, program, *arguments):
        return [self._wine, str(program), *map(str, arguments)]

    def elevates_all(self):
        """Until its version 9 Wine gave an administrator's rights to all programs, since then to those that ask for them."""
        version = subprocess.run(self.command("--version"), env=self.environment, capture_output=True, text=True).stdout
        return int(version.removeprefix("wine-").split(".")[0]) < 9

    def system_folder(self, bits=64):
        return self.prefix / "drive_c" / "windows" / ("system32" if bits == 64 else "syswow64")


Host = WindowsHost if ON_WINDOWS else WineHost


def install_stand_in(target, variant="sun_8", bits=64, **settings):
    """Puts a stand-in VM at `target`, a GUI program when its name ends in "w.exe". `settings` go into a file
    beside it, for VMs that are started without the variables of a run (record="...", exit=3)."""
    target = pathlib.Path(target)
    target.parent.mkdir(parents=True, exist_ok=True)
    image = bytearray(((FIXTURES if bits == 64 else FIXTURES_32) / f"stand_in_{variant}.exe").read_bytes())
    subsystem = struct.unpack_from("<I", image, 0x3C)[0] + 24 + 68
    struct.pack_into("<H", image, subsystem, 2 if target.stem.lower().endswith("w") else 3)
    target.write_bytes(image)
    if settings:
        lines = (f"STAND_IN_{name.upper()}={value}\n" for name, value in settings.items())
        (target.parent / "stand_in.txt").write_bytes("".join(lines).encode("utf-16-le"))
    return target


def install_vm(home, variant="sun_8", names=("java", "javaw"), compiler=False, **settings):
    """A VM's folder with stand-ins under "bin"; returns the path of the last one."""
    for name in names:
        program = install_stand_in(pathlib.Path(home) / "bin" / f"{name}.exe", variant, **settings)
    if compiler:
        (program.parent / "javac.exe").touch()
    return program


@dataclasses.dataclass
class Box:
    """A dialog that somebody had to answer."""
    title: str
    texts: list
    buttons: list
    icon: bool
    progress: bool
    progress_width: int

    @property
    def text(self):
        (text,) = self.texts
        return text


@dataclasses.dataclass
class Result:
    """What one run left behind."""
    exit_code: int
    stdout: bytes
    stderr: bytes
    boxes: list
    console: list
    held: bool
    records: list
    temp_files: list

    @property
    def record(self):
        """What the only stand-in VM of the run was given."""
        (record,) = self.records
        return record

    @property
    def box(self):
        (box,) = self.boxes
        return box

    def logged(self, name):
        """The text of the only "<name>: " line on standard error."""
        lines = self.stderr.decode("cp1252").splitlines()
        (text,) = (line[len(name) + 2:] for line in lines if line.startswith(f"{name}: "))
        return text

    @property
    def arguments(self):
        """The application's own of the arguments that the VM was given."""
        return self.record["arguments"][self.record["arguments"].index("Main") + 3:]

    @property
    def temp_path(self):
        """The temporary properties file that the VM was given."""
        return self.record["arguments"][self.record["arguments"].index("Main") + 2]

    @property
    def temp_lines(self):
        return host_path(self.temp_path).read_text("latin-1").splitlines()


class Run:
    """A launcher at work. Ends at the latest with its limit, and when the test is over."""

    def __init__(self, host, folder, request, stdin, limit, host_environment):
        self._limit = limit
        self._folder = folder
        host.newest_run = self
        self.record_file = folder / "record"
        (folder / "temp").mkdir(parents=True)
        request = [("limit", int(limit * 1000)), ("report", windows_path(folder / "report")), *request]
        (folder / "request").write_bytes("".join(f"{key}={value}\n" for key, value in request).encode("utf-16-le"))
        with contextlib.ExitStack() as files:
            output, error = (files.enter_context(open(folder / name, "wb")) for name in ("stdout", "stderr"))
            if stdin is None:
                source = subprocess.DEVNULL
            else:
                (folder / "stdin").write_bytes(stdin)
                source = files.enter_context(open(folder / "stdin", "rb"))
            self._process = subprocess.Popen(
                host.command(FIXTURES / "runner.exe", windows_path(folder / "request")),
                env=host.environment | (host_environment or {}), stdin=source, stdout=output, stderr=error)

    def records(self):
        """Records of the stand-in VMs so far."""
        return read_records(self.record_file)

    def wait_for_record(self):
        """Waits until a stand-in VM is running."""
        return wait_until(self.records, "start of a VM")[0]

    def wait_for_dialog(self, **facts):
        """Waits until one is on the screen of which these facts, as the runner names them, have been seen."""
        wait_until(lambda: any(facts.items() <= {name: values[0] for name, values in dialog.items()}.items()
                               for dialog in read_facts(self._folder / "report.seen", "title")), f"dialog {facts}")

    def is_running(self):
        return self._process.poll() is None

    def wait(self):
        self._process.wait(self._limit + 30)
        *boxes, report = read_facts(self._folder / "report", "title", "exitCode")
        boxes = [Box(box["title"][0], box["text"], box["button"],
                     *(int(box[name][0]) for name in ("icon", "progress", "progressWidth"))) for box in boxes]
        assert report["startError"] == ["0"], f"not started: error {report['startError']}"
        assert report["timedOut"] == ["0"], f"still running after {self._limit} s; boxes: {boxes}"
        return Result(int(report["exitCode"][0]), (self._folder / "stdout").read_bytes(),
                      (self._folder / "stderr").read_bytes(), boxes, report["row"], report["held"] == ["1"], self.records(),
                      sorted((self._folder / "temp").glob("ryn*.tmp")))

    def end(self):
        """The runner takes all that it started with it."""
        if self._process.poll() is None:
            self._process.kill()
            self._process.wait()


class App:
    """A folder with the launcher under a name of choice and its property file. `runs`: another place for what is kept of
    runs."""

    def __init__(self, host, folder, name="hello", extension=".exe", runs=None):
        self.host = host
        self.folder = pathlib.Path(folder)
        self.folder.mkdir(parents=True, exist_ok=True)
        self.program = self.folder / (name + extension)
        # `ryn make` has put one there.
        if not self.program.exists():
            shutil.copyfile(LAUNCHER, self.program)
        self.ryn = self.folder / (name + ".ryn")
        self._runs = []
        self._numbers = itertools.count(1)
        # Beside the folder, so that nothing of a run lies among the application's files.
        self._run_folder = pathlib.Path(tempfile.mkdtemp(prefix="run-", dir=runs or self.folder.parent))

    def windows_folder(self):
        return windows_path(self.folder)

    def write_ryn(self, content):
        """`content`: keys and values, or the very bytes of the file."""
        if not isinstance(content, bytes):
            escape = lambda text: "".join(c if ord(c) < 128 else f"\\u{ord(c):04x}" for c in str(text))
            content = "".join(f"{key}={escape(value)}\n" for key, value in content.items()).encode("ascii")
        self.ryn.write_bytes(content)

    def configure(self, **properties):
        """Writes a complete property file that admits every VM. Names of keys have "__" for each ".", values
        of None leave a key out: configure(ryn__user__dir="data")."""
        content = {"ryn.class.path": "app.jar", "ryn.nl.java.launcher.main.class": "Main",
                   "ryn.nl.valid.vm.list": "ALL", "ryn.nl.win32.java.launcher.platform": "2"}
        content |= {key.replace("__", "."): value for key, value in properties.items()}
        self.write_ryn({key: value for key, value in content.items() if value is not None})

    def start(self, tail="", *, command=None, vm=None, path=SYSTEM_PATH, env=None, unset=(), folder=None,
              stdin=None, handles=True, limit=LIMIT_SECONDS, enter=None,
              interrupt=None, control=False, host_environment=None):
        """Starts the launcher. `tail` is what stands behind the quoted program in the raw command line (or
        `command` is all of it); `vm` a host path for RYN_VM; `path` the variable PATH; `env` and `unset` more
        variables; `folder` the current folder (default: the application's); `stdin` bytes for standard
        input; `handles` False gives no standard handles. The rest tells the runner how to act as a user:
        see runner.cpp."""
        if ON_WINDOWS and host_environment:
            pytest.skip("only Wine takes this from its environment")
        run_folder = self._run_folder / str(next(self._numbers))
        temp = windows_path(run_folder / "temp")
        variables = {"Path": path, "TMP": temp, "TEMP": temp, "STAND_IN_RECORD": windows_path(run_folder / "record")}
        if vm is not None:
            variables["RYN_VM"] = windows_path(vm)
        program = windows_path(self.program)
        request = [("command", command if command is not None else f'"{program}" {tail}'.rstrip(" ")),
                   ("folder", windows_path(folder or self.folder)),
                   ("handles", "own" if handles else "none"),
                   ("control", "held" if control else ""), ("enter", enter or ""),
                   ("interrupt", interrupt or ""),
                   *(("set", f"{name}={value}") for name, value in (variables | (env or {})).items()),
                   *(("unset", name) for name in unset)]
        run = Run(self.host, run_folder, request, stdin, limit, host_environment)
        self._runs.append(run)
        return run

    def run(self, tail="", **options):
        """Starts the launcher and waits for its end."""
        return self.start(tail, **options).wait()

    def end(self):
        for run in self._runs:
            run.end()


class Registry:
    """Keys under HKEY_LOCAL_MACHINE, as the launcher sees it, that exist for one test."""

    def __init__(self, host, folder):
        self._host = host
        self._file = pathlib.Path(folder) / "registry.reg"
        # Each has a view of its own.
        self._reg = host.system_folder(image_bits(LAUNCHER)) / "reg.exe"
        self._tops = set()

    def add(self, keys):
        """`keys`: path without the root to a dict of value names; values are texts or numbers."""
        lines = []
        for key, values in keys.items():
            top = "\\".join(key.split("\\")[:2])
            if top not in self._host.own_keys:
                # What is taken away afterwards must not have been there before.
                assert self._host.wine(self._reg, "query", "HKLM\\" + top, check=False) != 0, f"{top} exists already"
                self._host.own_keys.add(top)
            self._tops.add(top)
            lines.append(f"[HKEY_LOCAL_MACHINE\\{key}]")
            for name, value in values.items():
                text = f"dword:{value:08x}" if isinstance(value, int) else '"' + value.replace("\\", "\\\\") + '"'
                lines.append(f'"{name}"={text}')
        self._import(lines)

    def clear(self):
        if self._tops:
            self._import([f"[-HKEY_LOCAL_MACHINE\\{top}]" for top in self._tops])
        self._tops.clear()

    def _import(self, lines):
        text = "\r\n".join(["Windows Registry Editor Version 5.00", "", *lines, ""])
        self._file.write_bytes(text.encode("utf-16"))
        self._host.wine(self._reg, "import", windows_path(self._file))
