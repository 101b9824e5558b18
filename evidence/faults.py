"""Servers, disks and users that fail a fetch on its way, and the start that follows."""
import collections
import contextlib
import hashlib
import itertools
import os
import random
import shutil
import signal
import socket
import struct
import subprocess
import tempfile
import threading
import time

import harness
import pack_server

from . import fetching
from .core import Row

TITLE = "Faults on the way"
ABOUT = ("A build fetches its VM (search option 11, digest verified where nothing else is said). Each fault meets a launch"
         " with windows, in German, Japanese, Arabic and English by turns. Asked is each time: do the boxes say what happened,"
         " in the language of the user, with exit code 106, or does the VM start with every file of one pack; is nothing left"
         " but what [vm-packs.md](vm-packs.md) names; does a build that ships its VM (option 21), started next, take the"
         " folder's runtime only when it is whole; and does the next good start fetch, clean up and pass on the VM's exit code.")
LANGUAGES = [fetching.GERMAN, fetching.JAPANESE, fetching.ARABIC, fetching.ENGLISH]
FETCHED_CODE, SHIPPED_CODE = 7, 9
STALL_SECONDS = 20
KILLS = 50
TRANSFER_SECONDS = 0.8
DISK_STEPS = 25
MANY_REDIRECTS = 1000
TEN_GB = 10 << 30
RUNTIME = "Windows/resource/jre"
MARKER = RUNTIME + "/ryn.unpacking"
BY_WAY = "Windows/downloadIntermediary"
PACK_FILE = "Windows/jvmspecsjre.vm"
DIGEST_TITLE, DIGEST_TEXT = ("MD5 Checksum Verification",
                             "Warning!! MD5 checksum verification for downloaded JVM failed\nInstaller exiting...")
NO_CONNECTION = fetching.NO_CONNECTION_TITLE, fetching.NO_CONNECTION
NO_DOWNLOAD = fetching.DOWNLOAD_ERROR_TITLE, fetching.NO_DOWNLOAD
NO_EXTRACTION = fetching.EXTRACTION_ERROR_TITLE, fetching.NO_EXTRACTION
STARTED, CANCELLED, BAD_DIGEST = "the VM started", "the user cancelled", "wrong digest"
SHORT = {NO_CONNECTION: "no connection", NO_DOWNLOAD: "no download", NO_EXTRACTION: "no extraction"}


def make_pack(version, filler=0):
    """A pack with a stand-in VM in which every file tells the version; its bytes, digest and files."""
    content = random.Random(version)
    with tempfile.TemporaryDirectory() as folder:
        # Behind the end of a program nobody looks.
        files = {name: content + version.encode() for name, content in pack_server.stand_in_files(folder).items()}
    files |= {f"lib/{number}": version.encode() + content.randbytes(3000) for number in range(20)}
    files |= {f"many/{number}": version.encode() * 100 for number in range(filler)}
    # The last one: what breaks off lacks it.
    files["release"] = version.encode()
    data = pack_server.archive({"vm.zip": pack_server.archive(files), "vm.properties": version})
    return data, hashlib.md5(data).hexdigest(), files


def reset(handler):
    connection = socket.socket(fileno=handler.connection.detach())
    connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
    connection.close()
    handler.close_connection = True


class Bed:
    """The server, the packs, and what is asked after each fault."""

    def __init__(self, bench, server, orphans, texts):
        self.bench, self.server, self.orphans, self.texts = bench, server, orphans, texts
        self.packs = [make_pack("A"), make_pack("B")]
        self.pack, self.digest, _ = self.packs[0]
        self.languages = itertools.cycle(LANGUAGES)
        self.url = server.url + "/jre.vm"

    def serve(self, answer=None, pack=0, verify=True, app=None, url=None):
        """Writes the options of a build that fetches a pack, which `answer` sends."""
        self.pack, self.digest, _ = self.packs[pack]
        self.server.answers["/jre.vm"] = self.pack if answer is None else answer
        pack_server.write_options(app, **pack_server.without_vm(11, "not__found", url or self.url, self.digest if verify else None))

    def start(self, app, language=None, **options):
        language = language or next(self.languages)
        environment = {"STAND_IN_EXIT": str(FETCHED_CODE)} | options.pop("env", {})
        run = app.start(handles=False, env=environment, host_environment={"LC_ALL": f"{fetching.LOCALES[language]}.UTF-8"}, **options)
        run.language = language
        return run

    def told(self, run, result):
        """What the user was told, as one of the outcomes; None when the documents know no such end, or not in this language."""
        texts = self.texts[run.language]
        progress = texts[fetching.DOWNLOADING_TITLE], texts[fetching.DOWNLOADING]
        boxes = [box for box in ((box.title, "".join(box.texts)) for box in result.boxes) if box != progress]
        if not boxes:
            return STARTED if result.exit_code == FETCHED_CODE and len(result.records) == 1 else None
        *before, last = boxes
        if result.exit_code != 106 or result.records or last != (
                texts[fetching.ERROR_TITLE], texts[fetching.NO_VM] + "\n\nRequired Java VM : ALL"):
            return None
        if not before:
            return CANCELLED
        if before == [(DIGEST_TITLE, DIGEST_TEXT)]:
            return BAD_DIGEST
        return next((failure for failure in SHORT if before == [(texts[failure[0]], texts[failure[1]])]), None)

    def whole(self, app):
        """Whether the runtime is that of one of the packs, with every byte."""
        found = {path: size for path, size in fetching.tree(app.folder / RUNTIME).items() if size >= 0}
        for _, _, files in self.packs:
            if found == {path: len(content) for path, content in files.items()} and all(
                    (app.folder / RUNTIME / path).read_bytes() == content for path, content in files.items()):
                return True
        return False

    def strays(self, app, told):
        """What is left of a fetch, but for the runtime."""
        found = [path for path in fetching.tree(app.folder / "Windows")
                 if not path.startswith(("jvmspecs/", "resource/jre/")) and path not in ("jvmspecs", "resource", "resource/jre")]
        return [path for path in sorted(found) if not (told == BAD_DIGEST and "Windows/" + path == PACK_FILE)]

    def after(self, row, what, app, pack=0):
        """The two starts that follow a fault; says whether the first took the runtime."""
        pack_server.write_options(app, option="withvm", with__vm__search__option=21)
        run = self.start(app, env={"STAND_IN_EXIT": str(SHIPPED_CODE)})
        result = run.wait()
        used = result.exit_code == SHIPPED_CODE and len(result.records) == 1
        row.expect(used or self.told(run, result) == CANCELLED, f"{what}: option 21 ended with {result.exit_code}, {result.boxes}")
        if used:
            row.expect(self.whole(app) and not (app.folder / MARKER).exists(), f"{what}: option 21 took half a runtime")
        self.good(row, what, app, pack)
        return used

    def good(self, row, what, app, pack=0):
        self.serve(app=app, pack=pack)
        run = self.start(app)
        result = run.wait()
        told = self.told(run, result)
        row.expect(told == STARTED, f"{what}: the next start ended with {result.exit_code}, {result.boxes}")
        row.expect(self.whole(app), f"{what}: the next start left a runtime that is not whole")
        row.expect(not self.strays(app, told), f"{what}: the next start left {self.strays(app, told)}")

    def meet(self, row, what, app, expected, left=(), **options):
        """A launch that meets the fault; `expected`: the outcomes that may come of it."""
        run = self.start(app, **options)
        try:
            result = run.wait()
        except AssertionError as error:
            run.end()
            row.expect(False, f"{what}: {error}")
            return None
        told = self.told(run, result)
        row.expect(told in expected, f"{what}: exit code {result.exit_code}, boxes {result.boxes}")
        strays = [path for path in self.strays(app, told) if path not in left]
        row.expect(not strays, f"{what}: left {strays}")
        if told == STARTED:
            row.expect(self.whole(app), f"{what}: started a runtime that is not whole")
        return told


def named(counts):
    return ", ".join(f"{count} {SHORT.get(told, told)}" for told, count in counts.most_common())


def series(bed, subject, done, faults, unseen="", shipped=True):
    """A row of faults of the server: each a name, an answer or a URL, and what may come of it."""
    row, counts = Row(subject, "", "", unseen), collections.Counter()
    for number, (what, answer, expected, *verify) in enumerate(faults):
        bed.bench.progress(f"{subject}: {what}")
        with bed.bench.app(name="hello") as app:
            bed.serve(answer, app=app, verify=not verify or verify[0], url=answer if isinstance(answer, str) else None,
                      pack=number % 2)
            counts[bed.meet(row, what, app, expected)] += 1
            bed.after(row, what, app, 1 - number % 2)
    row.done = f"{len(faults)}: " + (done or ", ".join(what for what, *_ in faults))
    row.outcome = f"{named(counts)}; every next start worked"
    return row


def stalls(bed):
    half = len(bed.pack) // 2

    def begin(handler, count):
        handler.begin(len(bed.pack))
        handler.wfile.write(bed.pack[:count])

    def at_start(handler):
        time.sleep(STALL_SECONDS)
        handler.begin(len(bed.pack))
        handler.wfile.write(bed.pack)

    def at_start_for_good(handler):
        time.sleep(STALL_SECONDS)
        handler.close_connection = True

    def midway(handler):
        begin(handler, half)
        time.sleep(STALL_SECONDS)
        handler.wfile.write(bed.pack[half:])

    def midway_for_good(handler):
        begin(handler, half)
        time.sleep(STALL_SECONDS)
        handler.close_connection = True

    def cancelled(handler):
        begin(handler, half)
        bed.bench.host.newest_run.wait_for_dialog(title=bed.texts[bed.bench.host.newest_run.language][fetching.DOWNLOADING_TITLE])
        bed.bench.host.post(bed.texts[bed.bench.host.newest_run.language][fetching.DOWNLOADING_TITLE], 0x10)
        time.sleep(2)
        with contextlib.suppress(OSError):
            while True:
                handler.wfile.write(bytes(1024))
                time.sleep(0.1)

    def trickle(handler):
        handler.begin(len(bed.pack))
        step = len(bed.pack) // 40 + 1
        for start in range(0, len(bed.pack), step):
            handler.wfile.write(bed.pack[start:start + step])
            time.sleep(0.25)

    row = series(bed, "The server stalls", "", [
        (f"{STALL_SECONDS} s before it answers", at_start, [STARTED]),
        (f"{STALL_SECONDS} s before it hangs up", at_start_for_good, [NO_CONNECTION]),
        (f"{STALL_SECONDS} s midway", midway, [STARTED]),
        (f"{STALL_SECONDS} s midway, and then no more", midway_for_good, [BAD_DIGEST]),
        ("the same, not verified", midway_for_good, [NO_EXTRACTION], False),
        ("midway, and the user closes the window", cancelled, [CANCELLED]),
        ("at every fortieth", trickle, [STARTED]),
    ], "how long Windows waits for a silent server: Wine waits for ever. Until data or an end come, the window stays and closing it"
       " has to wait; before the answer there is none")
    return row


def resets(bed):
    def at(count):
        def answer(handler):
            if count is None:
                return reset(handler)
            if count < 0:
                handler.wfile.write(b"HTTP/1.1 200 OK\r\nContent-Le")
                return reset(handler)
            handler.begin(len(bed.pack))
            handler.wfile.write(bed.pack[:count] if count < 1 << 20 else bed.pack[:-1])
            # What a reset overtakes is lost.
            time.sleep(0.3)
            reset(handler)
        return answer

    half = len(bed.pack) // 2
    return series(bed, "The server resets the connection", "", [
        ("before it answers", at(None), [NO_CONNECTION]), ("in its headers", at(-1), [NO_CONNECTION, BAD_DIGEST]),
        ("behind its headers", at(0), [BAD_DIGEST]), ("behind a byte", at(1), [BAD_DIGEST]), ("midway", at(half), [BAD_DIGEST]),
        ("before the last byte", at(1 << 20), [BAD_DIGEST]), ("midway, not verified", at(half), [NO_EXTRACTION], False),
        ("before the last byte, not verified", at(1 << 20), [NO_EXTRACTION, STARTED], False),
        ("no server at all", f"http://127.0.0.1:{free_port()}/jre.vm", [NO_CONNECTION])])


def free_port():
    with socket.socket() as server:
        server.bind(("127.0.0.1", 0))
        return server.getsockname()[1]


def lengths(bed):
    def says(length, **headers):
        def answer(handler):
            handler.begin(length(len(bed.pack)) if callable(length) else length, **headers)
            handler.wfile.write(bed.pack)
            handler.close_connection = True
        return answer

    def chunks(handler):
        handler.begin(None, Transfer_Encoding="chunked")
        handler.wfile.write(b"%x\r\n" % (len(bed.pack) * 2) + bed.pack)
        handler.close_connection = True

    either = [STARTED, BAD_DIGEST, NO_CONNECTION]
    return series(bed, "The server lies about the length", "", [
        ("a byte less", says(lambda size: size - 1), [BAD_DIGEST]), ("half", says(lambda size: size // 2), [BAD_DIGEST]),
        ("half, not verified", says(lambda size: size // 2), [NO_EXTRACTION], False), ("nothing", says(0), [BAD_DIGEST, STARTED]),
        ("a byte more", says(lambda size: size + 1), either), ("twice as much", says(lambda size: size * 2), either),
        ("10^18", says(10 ** 18), either), ("4 GiB and the right length", says(lambda size: size + (1 << 32)), either),
        ("-1", says(-1), either), ("\"many\"", says("many"), either), ("none", says(None), [STARTED]),
        ("a length and chunks", says(5, Transfer_Encoding="chunked"), either), ("a chunk that breaks off", chunks, either)])


def statuses(bed):
    def says(status, **headers):
        def answer(handler):
            handler.begin(0, status, **headers)
        return answer

    def no_http(handler):
        handler.wfile.write(bytes(999))
        handler.close_connection = True

    return series(bed, "The server refuses", "", [(str(status), says(status), [NO_CONNECTION]) for status in (
        204, 206, 304, 401, 404, 503)] + [("no HTTP", no_http, [NO_CONNECTION, BAD_DIGEST])])


def redirects(bed):
    count = itertools.count(1)

    def around(handler):
        if next(count) % MANY_REDIRECTS == 0:
            handler.begin(0, 302)
            handler.close_connection = True
        else:
            handler.begin(0, 302, Location="/jre.vm")

    def to(place):
        return lambda handler: handler.begin(0, 302, Location=place)

    bed.server.answers["/other.vm"] = lambda handler: handler.begin(0, 404)
    return series(bed, "The server redirects", "", [
        ("to itself, for ever", around, [NO_CONNECTION]), ("to nothing", to("/other.vm"), [NO_CONNECTION]),
        ("to where no server is", to(f"http://127.0.0.1:{free_port()}/jre.vm"), [NO_CONNECTION]),
        ("to a file", to("file:///C:/windows/win.ini"), [NO_CONNECTION, BAD_DIGEST]), ("to no URL", to("::::"), [NO_CONNECTION]),
        ("to a path of 100,000 characters", to("/" + "x" * 100_000), [NO_CONNECTION])],
        f"that Windows follows so many and no more: Wine follows without end, and here the server stops after {MANY_REDIRECTS:,}")


def endless(bed):
    sent, size = [], 16 << 20

    def zeros(length):
        def answer(handler):
            handler.begin(length)
            sent.append(0)
            block = bytes(1 << 16)
            while sent[-1] < TEN_GB:
                handler.wfile.write(block)
                sent[-1] += len(block)
                # When Wine closes a connection it reads on for as long as it need not wait.
                if sent[-1] > 2 * size:
                    time.sleep(0.2)
        return answer

    row = Row("The server sends 10 GiB", "", "")
    cases = [("of which it tells", zeros(TEN_GB)), ("of which it does not tell", zeros(None))]
    for number, (what, answer) in enumerate(cases):
        bed.bench.progress(f"{row.subject}: {what}")
        with small_app(bed, f"endless{number}", size) as (app, _):
            bed.serve(answer, app=app)
            bed.meet(row, what, app, [NO_DOWNLOAD])
            bed.after(row, what, app)
    row.done = f"{len(cases)} on a disk of {size >> 20} MiB: " + ", ".join(what for what, _ in cases)
    row.outcome = (f"no download, after {' and '.join(f'{count / (1 << 20):.0f}' for count in sent)} MiB sent; nothing left;"
                   " every next start worked")
    row.unseen = "what Windows' Internet cache does with it; Wine's takes as much as the disk did, on drive C"
    return row


@contextlib.contextmanager
def small_app(bed, name, size):
    """An application on a small disk, and remounting it."""
    folder = bed.bench.folder / name
    with fetching.volume(folder, size) as change:
        app = harness.App(bed.bench.host, folder / "app", runs=bed.bench.folder)
        app.configure()
        try:
            yield app, change
        finally:
            app.end()


def full_disks(bed):
    row, counts, used = Row("The disk is full", "", ""), collections.Counter(), 0
    need = 2 * len(bed.packs[0][0]) + sum(len(content) + 4096 for content in bed.packs[0][2].values())
    steps = [need * step // DISK_STEPS for step in range(DISK_STEPS + 1)]
    with small_app(bed, "full", 8 << 20) as (app, _):
        filler = app.folder.parent / "filler"
        for number, room in enumerate(steps):
            what = f"{room:,} bytes left"
            bed.bench.progress(f"{row.subject}: {what}")
            # Where a runtime is and where none is, by turns.
            if number % 2:
                shutil.rmtree(app.folder / RUNTIME, ignore_errors=True)
            bed.serve(app=app, pack=number % 2)
            free = os.statvfs(app.folder)
            with open(filler, "wb") as file:
                os.posix_fallocate(file.fileno(), 0, max(1, free.f_bavail * free.f_frsize - room))
            told = bed.meet(row, what, app, [NO_DOWNLOAD, NO_EXTRACTION, STARTED])
            counts[told] += 1
            filler.unlink()
            used += bed.after(row, what, app, number % 2)
    for told in (NO_DOWNLOAD, NO_EXTRACTION):
        row.expect(counts[told], f"no disk was full in such a way that there was {SHORT[told]}")
    row.done = f"{len(steps)} steps of {need // DISK_STEPS:,} bytes from none left to enough for all, every other over an older runtime"
    row.outcome = (f"{named(counts)}; what did fit was not used, an older runtime that was still whole was ({used} times);"
                   " every next start worked")
    return row


def read_only(bed):
    row, counts = Row("The target is read-only", "", ""), collections.Counter()
    places = ["the application's folder", "the runtime's folder"]
    with small_app(bed, "read-only", 16 << 20) as (app, change):
        bed.good(row, "before", app)
        bed.serve(app=app, pack=1)
        change("ro")
        counts[bed.meet(row, places[0], app, [NO_DOWNLOAD])] += 1
        change("rw")
        bed.after(row, places[0], app)
    with bed.bench.app() as app, fetching.volume(app.folder / RUNTIME, 4 << 20) as change:
        bed.serve(app=app)
        change("ro")
        counts[bed.meet(row, places[1], app, [NO_EXTRACTION])] += 1
        change("rw")
        bed.after(row, places[1], app)
    row.done = f"{len(places)} disks mounted read-only: " + ", ".join(places)
    row.outcome = f"{named(counts)}; every next start worked"
    row.unseen = "access lists: under Wine the disk refuses"
    return row


class Holder:
    """A program that has a file open for writing."""

    def __init__(self, bed, path):
        self._bed, self._path, self._event = bed, path, f"ryn-evidence-{next(Holder.numbers)}"

    numbers = itertools.count(1)

    def __enter__(self):
        host = self._bed.bench.host
        vm = harness.install_stand_in(self._bed.bench.folder / "holder" / "java.exe")
        self._process = subprocess.Popen(
            host.command("cmd", "/c", f"{harness.windows_path(vm)} >> {harness.windows_path(self._path)}"),
            env=host.environment | {"STAND_IN_WAIT": self._event}, **dict.fromkeys(("stdin", "stdout", "stderr"), subprocess.DEVNULL))
        harness.wait_until(self._path.exists, "the file that is held")
        return self

    def __exit__(self, *error):
        harness.wait_until(lambda: self._bed.bench.host.signal(self._event, check=False), "the holder")
        self._process.wait(harness.LIMIT_SECONDS)
        # What was made to be held, and nobody could replace.
        if self._path.exists() and self._path.stat().st_size == 0:
            self._path.unlink()


def locked(bed):
    row, counts = Row("A file is locked by another program", "", ""), collections.Counter()
    cases = [("the pack", PACK_FILE, [NO_DOWNLOAD]), ("vm.zip", BY_WAY + "/vm.zip", [NO_EXTRACTION]),
             ("the mark of a half-unpacked runtime", MARKER, [NO_EXTRACTION]),
             ("a file of the runtime", RUNTIME + "/lib/0", [STARTED])]
    for number, (what, path, expected) in enumerate(cases):
        bed.bench.progress(f"{row.subject}: {what}")
        with bed.bench.app() as app:
            bed.serve(app=app)
            (app.folder / path).parent.mkdir(parents=True, exist_ok=True)
            if expected == [STARTED]:
                bed.good(row, what, app)
            with Holder(bed, app.folder / path):
                left = [path.removeprefix("Windows/"), *([BY_WAY.removeprefix("Windows/")] if path.startswith(BY_WAY) else [])]
                counts[bed.meet(row, what, app, expected, left)] += 1
            shutil.rmtree(app.folder / BY_WAY, ignore_errors=True)
            bed.after(row, what, app, 1)
    what = "the VM's program, because it runs"
    with bed.bench.app() as app:
        bed.serve(app=app)
        first = bed.start(app, env={"STAND_IN_WAIT": "ryn-evidence-vm"})
        first.wait_for_record()
        counts[bed.meet(row, what, app, [STARTED])] += 1
        bed.bench.host.signal("ryn-evidence-vm")
        row.expect(first.wait().exit_code == FETCHED_CODE, f"{what}: the first start did not end well")
        bed.after(row, what, app, 1)
    row.done = f"{len(cases) + 1}: " + ", ".join([what for what, *_ in cases] + [what])
    row.outcome = f"{named(counts)}; every next start worked"
    row.unseen = ("a file in use is passed over: it stays as it was, which is right for the same pack alone. A mixture of two packs"
                  " is not told from a whole runtime")
    return row


def holds(process, path):
    """Whether a process has a file open."""
    with contextlib.suppress(OSError):
        return any(os.path.realpath(entry.path) == str(path) for entry in os.scandir(f"/proc/{process}/fd"))
    return False


class Pace:
    """Sends a pack so slowly that a moment within the transfer can be met."""

    def __init__(self, bed, pack, seconds):
        self._data, self._seconds = bed.packs[pack][0], seconds
        self.asked = threading.Event()

    def __call__(self, handler):
        self.asked.set()
        handler.begin(len(self._data))
        step = len(self._data) // 20 + 1
        for start in range(0, len(self._data), step):
            handler.wfile.write(self._data[start:start + step])
            time.sleep(self._seconds / 20)


def phase(app):
    """How far a fetch has come, by what lies there."""
    if (app.folder / BY_WAY).exists():
        return "unpacking"
    return "fetching or verifying" if (app.folder / PACK_FILE).exists() else "before or behind it"


def kills(bed):
    row, counts, used = Row("Killed and started again", "", ""), collections.Counter(), 0
    dice = random.Random(20261122)
    packs, bed.packs = bed.packs, [make_pack("C", 400), make_pack("D", 400)]
    try:
        with bed.bench.app() as app:
            # How long a fetch takes here, and the way to it.
            pace = Pace(bed, 0, TRANSFER_SECONDS)
            bed.serve(pace, app=app)
            start = time.monotonic()
            run = bed.start(app)
            assert pace.asked.wait(harness.LIMIT_SECONDS)
            before = time.monotonic() - start
            run.wait_for_record()
            fetch = time.monotonic() - start - before
            run.wait()
            for number in range(KILLS):
                bed.bench.progress(f"{row.subject}: {number} of {KILLS}")
                pace = Pace(bed, 1 - number % 2, TRANSFER_SECONDS)
                bed.serve(pace, app=app, pack=1 - number % 2)
                run = bed.start(app)
                process = harness.wait_until(lambda: next(iter(bed.orphans.running(app.program.name)), None), "the launcher")
                # One in five may meet the way to it.
                if number % 5:
                    assert pace.asked.wait(harness.LIMIT_SECONDS)
                time.sleep(dice.uniform(0, fetch if number % 5 else before))
                at = phase(app)
                with contextlib.suppress(ProcessLookupError):
                    os.kill(process, signal.SIGKILL)
                bed.orphans.usage(app.program.name)
                counts[at] += 1
                run.end()
                used += bed.after(row, f"kill {number}, {at}", app, number % 2)
                while bed.orphans.find(app.program.name):
                    bed.orphans.usage(app.program.name)
    finally:
        bed.packs = packs
    row.expect(counts["fetching or verifying"] >= KILLS // 10 and counts["unpacking"] >= KILLS // 10,
               f"too few moments were met: {dict(counts)}")
    row.done = f"{KILLS} times at a random moment, from the launcher's first instruction until a VM runs, over an older runtime"
    row.outcome = (", ".join(f"{count} {at}" for at, count in counts.most_common()) + f"; half a runtime was never used, a whole one"
                   f" {used} times; every next start worked")
    row.unseen = "a power failure: what was written is there"
    return row


def at_once(bed):
    row = Row("Starts at once", "", "")
    told, requests = collections.Counter(), []

    def counted(pack):
        def answer(handler):
            requests.append(pack)
            Pace(bed, pack, 0.5)(handler)
        return answer

    def damaged(handler):
        requests.append(None)
        handler.begin(9)
        handler.wfile.write(b"no zip at")

    words = []
    for number, what, answer, expected in ((2, "two", counted(0), STARTED), (10, "ten", counted(0), STARTED),
                                           (10, "ten of which the first is killed", counted(0), STARTED),
                                           (2, "two of a damaged pack", damaged, BAD_DIGEST),
                                           (10, "ten of a damaged pack", damaged, BAD_DIGEST)):
        bed.bench.progress(f"{row.subject}: {what}")
        requests.clear()
        told.clear()
        with bed.bench.app() as app:
            bed.serve(answer, app=app)
            runs = [bed.start(app, limit=2 * harness.LIMIT_SECONDS) for _ in range(number)]
            if "killed" in what:
                # Whoever got there first has the file open.
                first = harness.wait_until(lambda: [process for process in bed.orphans.running(app.program.name)
                                                    if holds(process, app.folder / PACK_FILE)], "the first download")
                os.kill(first[0], signal.SIGKILL)
            for run in runs:
                try:
                    result = run.wait()
                except AssertionError as error:
                    row.expect(False, f"{what}: {error}")
                    continue
                told[bed.told(run, result)] += 1
            killed = "killed" in what
            row.expect(told[expected] == number - killed, f"{what}: {dict(told)}")
            if expected == STARTED:
                row.expect(len(requests) == 1 + killed, f"{what}: {len(requests)} requests")
                row.expect(bed.whole(app), f"{what}: the runtime is not whole")
            words.append(f"{what}: {told[expected]} {SHORT.get(expected, expected)}, {len(requests)} fetched")
            bed.after(row, what, app, 1)
    row.done = f"{len(words)} times two or ten"
    row.outcome = "; ".join(words)
    row.unseen = "starts of several users and machines, which share the lock but not this display"
    return row


def rows(bench):
    with pack_server.serve() as server, fetching.Orphans() as orphans:
        bed = Bed(bench, server, orphans, fetching.texts())
        for part in (stalls, resets, lengths, statuses, redirects, endless, full_disks, read_only, locked, kills, at_once):
            yield part(bed)
