"""Bad input: see ABOUT."""
import collections
import concurrent.futures
import re

import harness
import pack_server
from harness import REPOSITORY, windows_path

from .core import Row

TITLE = "Bad input"
ABOUT = ("Each value that the launcher reads, of the `.ryn` file, of `jvmspecs.properties` and of a description"
         " file, is replaced by each of these texts, one at a time, beside others with which it is read; then all of"
         " a file at once. The keys are those that `ryn check` knows, taken from its source and that of the"
         " descriptions. A launch is counted when the VM, a stand-in, was started and its exit code came back, an"
         " error when it was told in a box of the documents ([exit-codes.md](exit-codes.md),"
         " [vm-packs.md](vm-packs.md)) with its exit code, a hang after a minute.")
ELEVATED = ("Every program under Wine counts as elevated, so that the file of `ryn.user.options` is not read;"
            " `ryn.service.stop.seconds` only decides how a service stops, and these were no services.")

LIMIT_SECONDS = 60
VM_EXIT = 7
MEGABYTE = 1 << 20

# As they stand in the files, where \u and four digits are a character.
HOSTILE = {
    "Nothing": "",
    "1 MB in one word": "x" * MEGABYTE,
    "1 MB of paths": ("lib/a b.jar;" * MEGABYTE)[:MEGABYTE],
    "A double quote that is never closed": '"',
    "Double and single quotes": "\"\"\" 'a\" b' \\\"c\\\\\"",
    "Format signs and variables": "%n%s%ls%99999999d%p%%%PATH%%% {0} ${user.home} $ENV_CLASSPATH$ %1$n",
    "Lone surrogates": r"\ud800a\udfff \udc00\ud83d",
    "Line separators": r"a\u000d\u000aryn.user.dir=no\u000ab\u0085\u2028\u2029\u000b\u000c",
    "The character 0": r"a\u0000b",
    "Other control characters": "a\\u0001\\u0007\\u0008\\u001b[2J\x7f\\ufeff\\uffff",
    "Characters beyond the code page, right to left": r"\u202e\u05d0\u0627 \u4e2d\ud83d\ude00",
    "Bytes that are no text": "\xff\xfe\x80\xc3(",
    "Devices and paths to nowhere": r"\\.\nul;\\?\C:\..\..\con;C:;\;..\..\..\..\aux",
    "A number too large": "9" * 40,
    "A negative number": "-9223372036854775809",
    "Signs of the command line": "& | < > ^ ( ) ! ; , = * ? @x -jar --",
}

LIST = "ryn.nl.valid.vm.list"
# What makes the launcher read a key.
ALSO = {
    "ryn.application.name": {"ryn.stdout.redirect": "console"},
    "ryn.win32.console.pause": {"ryn.stdout.redirect": "console"},
    "ryn.nl.win32.microsoftvm.min.version": {LIST: "MSJ"},
    "ryn.start.log.keep": {"ryn.start.class": "Main"},
    "ryn.start.log.size": {"ryn.start.class": "Main"},
}
DESCRIBED = {"build.option": "withoutvm", "build.jvmspec.applicable": "true", "build.jvmspec.total.num": "1",
             "build.jvmspec.0": "one.txt"}
HINT = "PATH_HINT:\n%VMS%\\*\n/:\n"
WITH = {"build.option": "withvm", "build.with.vm.search.option": "21"}


def table(path, name):
    """The names in a table of the sources."""
    text = (REPOSITORY / path).read_text()
    rows = re.search(rf"{name}\[\] = \{{(.*?)\n\}};", text, re.DOTALL)[1]
    return re.findall(r'^    \{(?:\.name = )?L"(.+?)"(.*)', rows, re.MULTILINE)


def fetching(url):
    """The options that fetch each of the two packs."""
    result = {}
    for option, address, checksum in ((11, "not.found", "not.found"), (12, "direct", "dont.search")):
        url_key = f"build.without.vm.{address}.download.url"
        digest = f"build.without.vm.{checksum}.download.url.md5Checksum."
        keys = {"build.option": "withoutvm", "build.without.vm.search.option": str(option), url_key: url + "/jre.vm",
                digest + "applicable": "true", digest + "value": "0" * 32}
        result |= {url_key: keys | {digest + "applicable": "no"}, digest + "applicable": keys, digest + "value": keys}
    return result


def cases(url):
    """(name of a case, function of the hostile text that gives the three files as texts)"""
    base = {"ryn.class.path": "app.jar", "ryn.nl.java.launcher.main.class": "Main", LIST: "ALL",
            "ryn.nl.win32.java.launcher.platform": "2"}
    keys = [key for key, _ in table("ryn/check_properties.cpp", "kRynKeys")]
    for key in keys:
        yield key, lambda text, key=key: (base | ALSO.get(key, {}) | {key: text}, {}, "")
    yield "all of the .ryn file", lambda text: (dict.fromkeys(keys, text), {}, "")

    fetches = fetching(url)
    options = [key for key, _ in table("ryn/check_properties.cpp", "kBuildKeys")]
    for key in [*options, "build.jvmspec.0"]:
        with_key = (fetches.get(key) or (DESCRIBED if "jvmspec" in key else WITH if ".with." in key else
                                         {"build.option": "withoutvm"}))
        yield key, lambda text, key=key, also=with_key: (base, also | {key: text}, "")
        if key.endswith(".url"):
            yield (f"{key} on a server",
                   lambda text, key=key, also=with_key: (base, also | {key: f"{url}/{text}.vm"}, ""))
    yield "all of jvmspecs.properties", lambda text: (base, dict.fromkeys(options, text), "")

    for key, rest in table("vmsearch/vm_description.h", "kDescriptionKeys"):
        value = "\n{}\n/:" if ".block" in rest else " {}"
        hint = "" if key == "PATH_HINT:" else HINT
        yield key, lambda text, line=key + value, hint=hint: (base, DESCRIBED, line.format(text) + "\n" + hint)


def told(box, code):
    """Whether this box, the last one, is among those of the documents with this exit code."""
    if box.title != harness.ERROR_TITLE:
        return False
    if box.text.startswith(harness.NO_VALID_VM + "\n\nRequired Java VM : "):
        return code == 106
    return code == 0 and (box.text == "The Brivant properties file contains invalid information" or
                          re.fullmatch(r"Windows error \d+ occured while loading the Java VM", box.text) is not None)


# Of a download, before the box that ends the launch.
EARLIER = {"Downloading", "Invalid VM Pack", "Network Connection Error", "JVM Download Error",
           "MD5 Checksum Verification", "JVM Extraction Error"}


def judge(result):
    """One of "launch", "error", "crash" and "neither"."""
    if result.exit_code >= 1 << 31 or result.exit_code == 3:
        return "crash"
    *earlier, last = result.boxes or [None]
    if result.records:
        told_nothing = {box.title for box in result.boxes} <= {"Downloading"}
        return "launch" if result.exit_code == VM_EXIT and told_nothing else "neither"
    return "error" if last and told(last, result.exit_code) and {box.title for box in earlier} <= EARLIER else "neither"


class Program:
    """Starts the launcher with such files, in a folder of its own each time."""

    def __init__(self, bench):
        self.bench = bench
        self.vms = bench.folder / "vms"
        harness.install_vm(self.vms / "eleven", "sun_11")
        for name in ("jview", "wjview"):
            harness.install_stand_in(self.vms / "ms" / f"{name}.exe", "jview")

    def run(self, files):
        properties, options, description = files
        with self.bench.app() as app:
            app.write_ryn(self.text(properties))
            if options:
                for folder in ("jvmspecs", "resource"):
                    (app.folder / "Windows" / folder).mkdir(parents=True)
                (app.folder / "Windows" / "jvmspecs" / "jvmspecs.properties").write_bytes(self.text(options))
                # Descriptions lie below the application's folder.
                (app.folder / "jvmspecs").mkdir()
                (app.folder / "jvmspecs" / "one.txt").write_bytes((description or HINT).encode("latin-1"))
            # A pack is fetched when there is none.
            finds = not any(".url" in key for key in options)
            path = [windows_path(self.vms / name) for name in ("eleven/bin", "ms")] if finds else []
            try:
                result = app.run("an argument", path=";".join([*path, harness.SYSTEM_PATH]), limit=LIMIT_SECONDS,
                                 env={"STAND_IN_EXIT": str(VM_EXIT), "VMS": windows_path(self.vms)})
            except AssertionError as error:
                if "still running" not in str(error):
                    raise
                return "hang", str(error)
            boxes = [(box.title, [text[:200] for text in box.texts]) for box in result.boxes]
            return judge(result), f"exit code {result.exit_code:#x}, {len(result.records)} VMs, boxes {boxes}"

    @staticmethod
    def text(entries):
        return "".join(f"{key}={value}\n" for key, value in entries.items()).encode("latin-1")


def rows(bench):
    program = Program(bench)
    with pack_server.serve() as server, concurrent.futures.ThreadPoolExecutor(2) as pool:
        server.answers["*"] = pack_server.stand_in_pack(bench.folder)
        every = list(cases(server.url))
        for subject, text in HOSTILE.items():
            bench.progress(subject)
            outcomes = pool.map(lambda case: program.run(case[1](text)), every)
            row, counts = Row(subject, f"{len(every)} values", "", ELEVATED), collections.Counter()
            for (name, _), (outcome, what) in zip(every, outcomes):
                counts[outcome] += 1
                row.expect(outcome in ("launch", "error"), f"{subject} as {name}: {outcome}: {what}")
            row.outcome = (f"{counts['launch']} launches, {counts['error']} errors told, {counts['crash']} crashes,"
                           f" {counts['hang']} hangs") + (f", {counts['neither']} neither" if counts["neither"] else "")
            yield row
