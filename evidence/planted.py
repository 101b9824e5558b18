"""Planted libraries: see ABOUT."""
import contextlib
import hashlib
import re
import shutil
import subprocess
import tempfile
import uuid

import harness
import pack_server
from harness import FIXTURES, windows_path

from .core import Row

TITLE = "Planted libraries"
ABOUT = ("A trace of Wine's loader tells which libraries a program asks for. Under each of these names a library that"
         " leaves a mark when it is loaded is put beside the program, into the folder in which it is started, into the"
         " application's `lib` and into a folder of `PATH`; Wine is told to prefer what it finds there to its own,"
         " and the same is done again, then once more with the libraries that were asked for by name taken out of"
         " the system folder, so that the search goes on to its end. That the trap snaps is shown by a program that"
         " loads the same names without any care (`tests/fixtures/careless.cpp`), with one of the four places at a"
         " time; for it, `lib` stands in `PATH`. What is counted is the process of the launcher: that a VM inherits"
         " a part of the narrowed search is Windows' doing.")

PLANTED_FIRST = "native,builtin"
HIDDEN = ".hidden"
# The search as narrowDllSearch leaves it.
NARROW = r"c:\windows\system32" "\\"
LINE = re.compile(r'(?P<process>\w+):(?P<thread>\w+):trace:(?:'
                  r'loaddll:build_module Loaded L"(?P<loaded>.*)" at (?P<base>\w+): (?P<kind>\w+)|'
                  r'module:free_modref +unloading L"(?P<unloaded>.*)"|'
                  r'module:LdrResolveDelayLoadedAPI \((?P<delaying>\w+),.*|'
                  r'module:load_dll looking for L"(?P<asked>.*)" in (?:\(null\)|L"(?P<search>.*)"))$')
EARLY, LATE, DELAYED, ASTRAY = range(4)


def unescape(path):
    return (path or "").replace("\\\\", "\\").lower()


def name_of(path):
    name = path.rsplit("\\")[-1]
    return name if "." in name else name + ".dll"


class Trace:
    """What one process, the one that runs `program` (a path of this host), asked its loader for, from what
    WINEDEBUG=+pid,+module,+loaddll told. What is loaded already is not asked for.

    `places`, name by name: EARLY, before the search was narrowed; LATE, afterwards, in the system folder alone;
    DELAYED, afterwards, by libraries of the system in the middle of a call, with what these need; ASTRAY, elsewhere,
    too. `bare`: late ones that were asked for without a path. `natives`: paths of what was loaded and is none of Wine's
    own."""

    def __init__(self, text, program):
        # Which is there before anything is traced.
        self.places, self.bare, self.natives, there = {"ntdll.dll": EARLY}, set(), [], {"ntdll.dll"}
        start, process, own, narrowed, delaying = windows_path(program).lower(), None, None, False, {}
        for line in filter(None, map(LINE.match, text.splitlines())):
            texts = (unescape(line[name]) for name in ("loaded", "unloaded", "asked", "search"))
            loaded, unloaded, asked, search = texts
            if process is None and loaded == start:
                process, own = line["process"], line["base"]
            if line["process"] != process:
                continue
            there = (there | {name_of(loaded)}) - {name_of(unloaded)}
            if line["kind"] == "native":
                self.natives.append(loaded)
            if line["delaying"]:
                delaying[line["thread"]] = line["delaying"]
            if not asked or name_of(asked) in there:
                continue
            if narrow := search == NARROW:
                narrowed, delaying[line["thread"]] = True, None
            by_system = not search and delaying.get(line["thread"]) not in (None, own)
            # user32.dll asks for this one as soon as it is there; Windows knows it as it knows user32.dll.
            early = not narrowed and (not search or name_of(asked) == "imm32.dll")
            place = EARLY if early else LATE if narrow else DELAYED if by_system else ASTRAY
            name = name_of(asked)
            self.places[name] = max(place, self.places.get(name, place))
            if narrow and "\\" not in asked:
                self.bare.add(name)
        assert process, f"no trace of {program}: {text[-2000:]}"


class Site:
    """An application folder called "planted", and the four places."""
    PLACES = ("beside the program", "working folder", "lib", "PATH")

    def __init__(self, bench, app):
        self.host, self.app, self.base = bench.host, app, app.folder.parent
        self.program = app.program
        folders = app.folder, self.base / "current", app.folder / "lib", self.base / "on path"
        self.folders = dict(zip(self.PLACES, folders))
        for folder in self.folders.values():
            folder.mkdir(exist_ok=True)
        self.marks = self.base / "marks"
        self.trace = ""

    def plant(self, names, places):
        for place in places:
            for name in names:
                shutil.copyfile(FIXTURES / "marker.dll", self.folders[place] / name)

    @contextlib.contextmanager
    def trap(self, program, names, absent):
        """Tells Wine to prefer what is planted under these names, for programs called `program` alone, and takes
        `absent` out of the system folder."""
        key = rf"HKEY_CURRENT_USER\Software\Wine\AppDefaults\{program}"

        def write(lines):
            with tempfile.NamedTemporaryFile(suffix=".reg", dir=self.base) as file:
                file.write("\r\n".join(["Windows Registry Editor Version 5.00", "", *lines, ""]).encode("utf-16"))
                file.flush()
                self.host.wine("reg", "import", windows_path(file.name))
        # Under the bare name for what is asked for by name, with "*" for what is found along the search.
        patterns = [star + name.removesuffix(".dll") for name in names for star in ("", "*")]
        write([rf"[{key}\DllOverrides]", *(f'"{pattern}"="{PLANTED_FIRST}"' for pattern in patterns)])
        for file in (self.host.system_folder() / name for name in absent):
            if file.exists():
                file.rename(f"{file}{HIDDEN}")
        try:
            yield
        finally:
            restore(self.host)
            write([f"[-{key}]"])

    def options(self, path=()):
        """For App.run: the working folder and a folder of PATH are those of the trap."""
        return {"folder": self.folders["working folder"], "env": {"MARKER_FILE": windows_path(self.marks)},
                "path": ";".join([harness.SYSTEM_PATH, *map(windows_path, path), windows_path(self.folders["PATH"])]),
                "host_environment": {"WINEDEBUG": "+pid,+module,+loaddll"}}

    def run(self, *arguments, path=(), **options):
        result = self.app.run(*arguments, **self.options(path) | options)
        self.trace = result.stderr.decode("latin-1")
        return [(box.title, box.text.split("\n")[0]) for box in result.boxes], len(result.records), result.exit_code

    def loaded(self):
        """Planted libraries that the program loaded, as their own marks and Wine's trace say."""
        folders = [windows_path(folder).lower() for folder in self.folders.values()]
        marked = {facts["library"][0].lower() for facts in harness.read_facts(self.marks, "library")
                  if facts["program"] == [windows_path(self.program)]}
        traced = {path for path in Trace(self.trace, self.program).natives if path.rsplit("\\", 1)[0] in folders}
        return (marked | traced) - {windows_path(self.program).lower()}


def restore(host):
    """Puts back what this part, or one that did not come to its end, took out of the system folder."""
    for file in host.system_folder().glob(f"*{HIDDEN}"):
        file.rename(file.with_suffix(""))


# The situations: each brings itself about on a site and tells in a few words what came of it.

# All that a key can switch on: the check of the VM's folder, a job, short paths, a console.
EVERYTHING = {"ryn__class__path": "lib/app.jar", "ryn__nl__designer__jvm__securefolder__check": "true",
              "ryn__win32__job": "true", "ryn__win32__short__paths": "true", "ryn__stdout__redirect": "console",
              "ryn__user__options": "none.txt"}


def launch(site):
    site.app.configure(**EVERYTHING)
    return site.run("one two", path=[harness.install_vm(site.base / "vm").parent])


def no_vm(site):
    return site.run()


def fetched(site, pack, **options):
    with pack_server.serve(**options) as server:
        server.answers["*"] = pack
        pack_server.write_options(site.app, **pack_server.without_vm(12, "dont__search", server.url + "/jre.vm",
                                                                     hashlib.md5(pack).hexdigest()))
        # Where it is unpacked.
        (site.app.folder / "Windows" / "resource").mkdir(exist_ok=True)
        return site.run()


def download(site):
    return fetched(site, pack_server.stand_in_pack(site.base))


def refused_download(site):
    return fetched(site, b"", certificate=site.base)


def service(site):
    """Started beside the service manager, so that its environment is this part's."""
    record = site.base / "record"
    vm = harness.install_vm(site.app.folder / "vm", "sun_11", record=windows_path(record))
    site.app.configure(ryn__nl__current__vm=windows_path(vm), **EVERYTHING)
    name = f"ryn-{uuid.uuid4().hex[:8]}"
    options = site.options()
    environment = options["env"] | options["host_environment"] | {"WINEPATH": options["path"]}
    command = f'"{windows_path(site.program)}" -tqrynservice {name}'
    done = subprocess.run(site.host.command(FIXTURES / "service_driver.exe", name, command, "beside", "ended"), timeout=180,
                          env=site.host.environment | environment, cwd=options["folder"], capture_output=True)
    site.trace = done.stderr.decode("latin-1")
    return done.stdout.decode().split(), len(harness.read_records(record)), done.returncode


def explain(site):
    site.program = site.app.folder / "ryn.exe"
    shutil.copyfile(harness.BUILD / "ryn" / "ryn.exe", site.program)
    return site.run(command=f'"{windows_path(site.program)}" explain "{windows_path(site.app.program)}"')


NO_VM = (harness.ERROR_TITLE, harness.NO_VALID_VM.split("\n")[0])
NO_CONNECTION = ("Network Connection Error", "Could not connect to the specified URL")
DOWNLOADING = ("Downloading", "Downloading Java Virtual Machine pack")
SITUATIONS = {
    "A launch, to the start of its VM": (launch, ([], 1, 0)),
    "The box of an error": (no_vm, ([NO_VM], 0, 106)),
    "The dialog of a download, and the start of what it brought": (download, ([DOWNLOADING], 1, 0)),
    "A download over TLS from a server that nobody trusts, and its box":
        (refused_download, ([NO_CONNECTION, NO_VM], 0, 106)),
    "A service and its VM": (service, (["beside", "0", "ended", "0"], 1, 0)),
    "`ryn.exe`, which explains a launch": (explain, ([], 0, 1)),
}


def unseen(early, delayed, then):
    """What the row of these names does not show; `then` are delayed when others are missing."""
    listed = lambda names: ", ".join(f"`{name}`" for name in sorted(names))
    text = (f"{len(early)} of the names are asked for before the program's first line, by its import table and by those"
            " of Wine's libraries. Windows takes these from its list of known libraries; Wine 8 has none, and its"
            " rule to prefer its own stands for it.")
    if delayed or then:
        asked = [*([listed(delayed)] if delayed else []), *([f"{listed(then)} when it is missing"] if then else [])]
        text += (f" Wine's libraries ask for {', and for '.join(asked)}, in the middle of a call and then look beside"
                 " the program whatever it has narrowed: the same rule stands for what Windows does.")
    return text


def rows(bench):
    @contextlib.contextmanager
    def site():
        with bench.app(name="planted") as app:
            yield Site(bench, app)

    restore(bench.host)
    seen, planted, loaded, fallen = set(), 0, 0, 0
    for subject, (act, expected) in SITUATIONS.items():
        bench.progress(subject)
        places, bare = {}, set()
        # Twice, because threads do not always come in the same order.
        for _ in range(2):
            with site() as untouched:
                outcome = act(untouched)
                assert outcome == expected, f"{subject}: {outcome}"
                trace, program = Trace(untouched.trace, untouched.program), untouched.program.name
            places |= {name: max(place, places.get(name, place)) for name, place in trace.places.items()}
            bare |= trace.bare
        early, late, delayed, astray = (sorted(name for name in places if places[name] == place)
                                        for place in (EARLY, LATE, DELAYED, ASTRAY))
        # Without its driver there is no display.
        searched = [name for name in late if name in bare and name.endswith(".dll")]
        files = len(places) * len(Site.PLACES)
        row = Row(subject, f"{len(places)} names in the trace, {files} files; {len(late)} preferred to Wine's own", "")
        row.expect(not astray, f"{subject}: looked for in more than the system folder: {', '.join(astray)}")

        def spring(absent):
            """What was loaded, what came of the situation, and the late names for which Wine's own libraries looked in
            more than the system folder this time: these do not count, and the trap is set again without them."""
            wines = set()
            while True:
                with site() as trapped:
                    trapped.plant(places, Site.PLACES)
                    with trapped.trap(program, [name for name in late if name not in wines], absent):
                        outcome = act(trapped)
                    found, places_now = trapped.loaded(), Trace(trapped.trace, trapped.program).places
                more = {name for name in map(name_of, found) if places_now.get(name) == DELAYED} - wines
                if not more:
                    return found, outcome, wines
                wines |= more

        found, outcome, also = spring([])
        row.expect(outcome == expected, f"{subject}: planted libraries changed it to {outcome}")
        # Without them it need not come to the same.
        found_without, _, then = spring(searched)
        fault = f"{subject}: planted libraries were loaded: {', '.join(sorted(found | found_without))}"
        row.expect(not found | found_without, fault)
        delayed = {*delayed, *also}
        row.unseen = unseen(early, delayed, then - delayed)
        victims = []
        for place in Site.PLACES:
            with site() as careless:
                careless.program = careless.app.folder / program
                shutil.copyfile(FIXTURES / "careless.exe", careless.program)
                careless.plant(late, [place])
                with careless.trap(program, late, late):
                    careless.run(command=f'"{windows_path(careless.program)}" {" ".join(late)}',
                                 path=[careless.folders["lib"]])
                victims.append(len(careless.loaded()))
        assert victims == [len(late)] * len(victims), f"{subject}: the trap does not work: {victims} of {late}"
        row.outcome = (f"{len(found)} loaded; {len(found_without)} with {len(searched)} taken out of the system folder;"
                       f" {len(late)} by the careless program in each of the {len(victims)} places")
        seen |= places.keys()
        planted += files
        loaded += len(found) + len(found_without)
        fallen += sum(victims)
        yield row
    yield Row("All of them", f"{len(seen)} different names, {planted} files",
              f"{loaded} loaded; {fallen} by the careless program")
