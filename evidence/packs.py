"""Damaged and hostile VM packs, fetched by the real launcher from a server on this machine."""
import collections
import concurrent.futures
import contextlib
import dataclasses
import hashlib
import os
import posixpath
import queue
import random
import re
import shutil
import struct
import time
import zipfile
import zlib

import harness
import pack_server

from . import fetching
from .core import Row

TITLE = "Damaged packs"
ABOUT = ("Each pack is fetched over HTTP, unpacked and started by the launcher as an application ships it (search option"
         " 11), one in ten with its windows and the rest silently. The VM in most packs is a text, which Windows refuses"
         " to start, so that no code of a damaged pack runs. A pack passes when the launch ends within its limit, with"
         " the exit codes and boxes of the documents, when nothing lies anywhere but where"
         " [vm-packs.md](vm-packs.md) lets a pack write, and when the pack and what it was unpacked by way of are gone."
         " Looked at are all of the application's folder, all of the drive C of Wine and the top of the drive Z. Memory"
         " is the most that was resident of the launcher's process, as the kernel tells it when the process has ended.")
LANES = 2
AT_ONCE = 50
LIMIT_SECONDS = 60
LONG_LIMIT_SECONDS = 300
# Of the launcher with all the libraries that Wine loads for a download with its window, and what is left for a pack.
MOST_MEMORY = 64 << 20
VOLUME = 64 << 20
LEAST = 2000
FEWEST_FLIPS = 250
CORPUS = harness.REPOSITORY / "build" / "fuzz" / "corpus" / "archive"
MOST_OF_CORPUS = 300
CACHE = re.compile(r"users/[^/]+/AppData/Local/Microsoft/Windows/(INetCache|History|INetCookies)(/|$)")
MOST_OF_NAME = 260
PARENTS = "\\..\\", "\\../", "/../", "/..\\"
DOS, UNIX = 20, 0x314
FOLDER, READ_ONLY, HIDDEN_SYSTEM = 0x10, 1, 2 | 4
MAX32 = 0xFFFFFFFF


@dataclasses.dataclass
class Entry:
    name: bytes
    data: bytes = b""
    method: int = zlib.DEFLATED
    flags: int = 0
    made_by: int = DOS
    attributes: int = 0x20
    extra: bytes = b""
    # The data as they lie in the archive, and their size, where it is not to be made from `data`.
    packed: bytes = None
    size: int = None


def deflated(data):
    stream = zlib.compressobj(wbits=-15)
    return stream.compress(data) + stream.flush()


def zip_of(entries, first=None, count=None):
    """An archive. `first`: all entries of the directory lead to the data of that one; `count`: what the end claims."""
    body, directory, starts = bytearray(), bytearray(), []
    for entry in entries:
        packed = entry.packed
        if packed is None:
            packed = deflated(entry.data) if entry.method == zlib.DEFLATED else entry.data
        size = len(entry.data) if entry.size is None else entry.size
        sizes64 = b"" if size < MAX32 else struct.pack("<HHQQ", 1, 16, size, len(packed))
        common = struct.pack("<HHHIIIIH", 20, entry.flags, entry.method, 0x58216000, zlib.crc32(entry.data),
                             MAX32 if sizes64 else len(packed), MAX32 if sizes64 else size, len(entry.name))
        starts.append(len(body))
        if first is None or not starts[1:]:
            body += b"PK\3\4" + common + struct.pack("<H", len(entry.extra)) + entry.name + entry.extra + packed
        directory += (b"PK\1\2" + struct.pack("<H", entry.made_by) + common +
                      struct.pack("<HHHHII", len(sizes64), 0, 0, 0, entry.attributes, 0 if first else starts[-1]) +
                      entry.name + sizes64)
    count = len(entries) if count is None else count
    end64 = b""
    if count > 0xFFFF:
        at = len(body) + len(directory)
        end64 = (struct.pack("<4sQHHIIQQQQ", b"PK\6\6", 44, 45, 45, 0, 0, count, count, len(directory), len(body)) +
                 struct.pack("<4sIQI", b"PK\6\7", 0, at, 1))
    few = min(count, 0xFFFF)
    return bytes(body + directory + end64 +
                 struct.pack("<4sHHHHIIH", b"PK\5\6", 0, 0, few, few, len(directory), len(body), 0))


def pack_of(inner, method=zipfile.ZIP_DEFLATED, before=(), after=()):
    vm = Entry(b"vm.zip", inner, zlib.DEFLATED if method == zipfile.ZIP_DEFLATED else 0)
    return zip_of([*before, vm, Entry(b"vm.properties", b"vm.name=x"), *after])


NO_PROGRAM = b"no program, so that nothing of a damaged pack runs\r\n" * 3
VM = [Entry(b"bin/", attributes=FOLDER), Entry(b"bin/java.exe", NO_PROGRAM), Entry(b"bin/javaw.exe", NO_PROGRAM)]


@dataclasses.dataclass
class Pack:
    name: str
    content: bytes
    digest: str = None  # verified, when there is one
    limit: float = LIMIT_SECONDS
    room: bool = True  # on a disk with room for all; else on a small one


@dataclasses.dataclass
class Kind:
    subject: str
    done: str  # what the packs are, behind their number
    packs: list


def plain_pack(size, seed=1, method=0):
    """A pack of about `size` bytes: a runtime of small files that do not deflate well."""
    content = random.Random(seed)
    files = [Entry(f"lib/{number}.jar".encode(), content.randbytes(700), zlib.DEFLATED if number % 2 else 0,
                   made_by=UNIX if number % 3 else DOS, attributes=0x81A40000 if number % 3 else 0x20,
                   extra=b"UT\5\0\1" + struct.pack("<I", 10 ** 9 + number) if number % 4 else b"")
             for number in range(max(1, (size - 900) // 850))]
    return pack_of(zip_of([*VM, *files]), zipfile.ZIP_STORED if method == 0 else zipfile.ZIP_DEFLATED)


def cut_packs():
    for method, name in ((0, "stored"), (8, "deflated")):
        whole = plain_pack(16_000, method=method)
        for at in range(0, len(whole), 64):
            yield Pack(f"{name}, cut at {at}", whole[:at])
            if at % 512 == 0:
                yield Pack(f"{name}, cut at {at}, verified", whole[:at], digest=hashlib.md5(whole).hexdigest())


def headers(content):
    """Places of headers: at, and the fields within as place and width."""
    fields = {b"PK\3\4": [(6, 2), (8, 2), (14, 4), (18, 4), (22, 4), (26, 2), (28, 2)],
              b"PK\1\2": [(8, 2), (10, 2), (20, 4), (24, 4), (28, 2), (30, 2), (32, 2), (34, 2), (42, 4)],
              b"PK\5\6": [(4, 2), (6, 2), (8, 2), (10, 2), (12, 4), (16, 4), (20, 2)]}
    return [(found.start(), fields[found.group()]) for found in re.finditer(rb"PK(\x01\x02|\x03\x04|\x05\x06)", content)]


def lying_packs():
    """Each field of the first headers of each kind that tells a size, a place or a count, in both archives."""
    whole, dice = pack_of(zip_of(VM), zipfile.ZIP_STORED), random.Random(5)
    for at, fields in headers(whole):
        for place, width in fields:
            true = int.from_bytes(whole[at + place:at + place + width], "little")
            most = (1 << 8 * width) - 1
            lies = {0, 1, true - 1 & most, true + 1 & most, most >> 1, (most >> 1) + 1, most - 1, most} - {true}
            for lie in dice.sample(sorted(lies), 5):
                content = bytearray(whole)
                content[at + place:at + place + width] = lie.to_bytes(width, "little")
                yield Pack(f"{whole[at + 2]}{whole[at + 3]} at {at}, field {place}: {lie}", bytes(content))


def flipped_packs(count):
    dice = random.Random(20261122)
    whole = [plain_pack(9_000, seed=2, method=method) for method in (0, 8)]
    places = [[place for at, _ in headers(content) for place in range(at, min(at + 50, len(content)))] for content in whole]
    for number in range(count):
        content = bytearray(whole[number % 2])
        # Headers are a small part of the bytes and the interesting one: half of the damage goes there.
        for flip in range(dice.randint(1, 4)):
            at = dice.choice(places[number % 2]) if flip % 2 else dice.randrange(len(content))
            content[at] ^= 1 << dice.randrange(8)
        yield Pack(f"flipped {number}", bytes(content))


def zeros(size):
    """`size` zero bytes (whole MiB), deflated."""
    stream = zlib.compressobj(9, wbits=-15)
    # Behind a full flush a block leans on nothing before it, so that it can be repeated.
    block = stream.compress(bytes(1 << 20)) + stream.flush(zlib.Z_FULL_FLUSH)
    return block * (size >> 20) + stream.flush()


def bombs():
    ten = 10 << 30
    ten_gb = zeros(ten)
    bomb = Entry(b"lib/modules", packed=ten_gb, size=ten)
    other = Entry(b"bomb", packed=ten_gb, size=ten)
    eight = Entry(b"", packed=zeros(8 << 20), size=8 << 20)
    whole = zip_of(VM)
    many = [dataclasses.replace(eight, name=b"lib/%04d" % number) for number in range(2000)]
    yield "vm.zip is 10 GiB of zeros", zip_of([Entry(b"vm.zip", packed=ten_gb, size=ten)])
    yield "10 GiB in the runtime, behind the VM", pack_of(zip_of([*VM, bomb]), zipfile.ZIP_STORED)
    yield "10 GiB in the runtime, before the VM, in a pack of 40 KB", pack_of(zip_of([bomb, *VM]))
    yield "10 GiB beside vm.zip, before it", pack_of(whole, before=[other])
    yield "10 GiB beside vm.zip, behind it", pack_of(whole, after=[other])
    yield "10 GiB that the directory calls 1 KB", pack_of(zip_of([*VM, dataclasses.replace(bomb, size=1024)]))
    short = dataclasses.replace(bomb, packed=zeros(1 << 20)[:1024])
    yield "1 KB that the directory calls 10 GiB", pack_of(zip_of([*VM, short]))
    yield "2,000 entries of 8 MiB each", pack_of(zip_of([*VM, *many]))
    yield "2,000 entries that share 8 MiB", pack_of(zip_of(many, first=True))
    yield "300 entries of 8 MiB under one name", pack_of(zip_of([*VM, *[dataclasses.replace(eight, name=b"lib/one")] * 300]))
    yield "300 entries of 8 MiB, and no VM", pack_of(zip_of([dataclasses.replace(eight, name=b"lib/one")] * 300))
    nested = whole
    for _ in range(30):
        nested = pack_of(nested)
    yield "packs in packs, 30 deep", nested
    yield "a comment of 65,535 bytes and as much of extra fields", pack_of(zip_of(
        [dataclasses.replace(entry, extra=b"UT\xff\xff" + bytes(65_531)) for entry in VM]))
    yield "folders 130 deep", pack_of(zip_of([*VM, *[Entry(b"d/" * 129 + b"%d" % number) for number in range(50)]]))


def bomb_packs():
    for name, content in bombs():
        yield Pack(name, content, limit=LONG_LIMIT_SECONDS, room=False)


def many_packs():
    few = [Entry(b"%d/%d" % divmod(number, 256)) for number in range(65_536)]
    same = [Entry(b"one", b"x")] * 65_536
    yield Pack("65,535 in the runtime", pack_of(zip_of([*VM, *few[:65_532]])), limit=LONG_LIMIT_SECONDS, room=False)
    yield Pack("65,536 in the runtime", pack_of(zip_of([*VM, *few[:65_533]])), limit=LONG_LIMIT_SECONDS, room=False)
    yield Pack("65,536 under one name", pack_of(zip_of([*VM, *same])), limit=LONG_LIMIT_SECONDS, room=False)
    yield Pack("65,536 of which none can be read", pack_of(zip_of(
        [*VM, *(dataclasses.replace(entry, method=12) for entry in few)])), limit=LONG_LIMIT_SECONDS, room=False)
    for claim in (0, 1, 4, 0xFFFF, 0x10000, 1 << 31, 1 << 32, (1 << 63) - 1, (1 << 64) - 1):
        yield Pack(f"3 that claim to be {claim:,}", pack_of(zip_of(VM, count=claim)))
        yield Pack(f"2 in the pack that claim to be {claim:,}", zip_of([Entry(b"vm.zip", zip_of(VM)), Entry(b"vm.properties")],
                                                                     count=claim))


def names(outside):
    """Names of every kind; the absolute ones lead into the folder `outside`, as Windows and this system write it."""
    yield from (b"", b".", b"..", b"...", b"/", b"\\", b"//", b"a/", b"a//b", b"a\\b", b"a/./b", b"./a", b"a/.",
                b"a/..", b"a\\..", b"../up", b"..\\up", b"../../up", b"..\\..\\..\\up", b"a/../up", b"a/../../up",
                b"a\\..\\/../up", b"a/..\\up", b".. /up", b"..../up", b"a/.. /up", b"a/... /up",
                b"../jvmspecs/planted", b"..\\downloadIntermediary\\planted", b"../resource/planted",
                b"../../hello.exe.planted", b"..", b"../", b"..//up", b"../../")
    yield from (b"C:", b"C:up", b"C:/up", b"C:\\up", b"c:\\..\\up", b"C:C:up", b"/C:/up", b"Z:/up",
                b"\\\\server\\share\\up", b"//server/share/up", b"\\\\?\\C:\\up", b"\\\\.\\pipe\\up",
                b"\\??\\C:\\up", b"file:///up", b"1:2:3", b":", b"::", b"/etc/up", b"\\windows\\up", b"%TEMP%\\up",
                b"~/up", b"$HOME/up")
    yield from (b"NUL", b"nul.txt", b"CON", b"AUX", b"PRN", b"COM9", b"LPT9", b"CONIN$", b"CONOUT$", b"CLOCK$",
                b"a/NUL", b"NUL/a", b"NUL:", b"COM9:", b"bin/NUL")
    yield from (b"a:stream", b"bin/java.exe:stream", b"a::$DATA", b"bin::$INDEX_ALLOCATION", b"a:b:c")
    yield from (b"dot.", b"dots...", b"blank ", b"blanks   ", b" before", b"a./b", b"a /b", b"?", b"*", b"<>",
                b"\"quoted\"", b"a|b", b"tab\t", b"line\nline", b"\r\n", b"\1\2\3", b"\x7f", b"nul\0hidden", b"\0",
                b"bin/java.exe\0.txt")
    yield from ("größe".encode(), "中文".encode(), "\U0001f600".encode(), b"\xff\xfe", b"\xc0\xae\xc0\xae/up",
                b"\xc0\xafup", b"\xed\xa0\x80", b"\xed\xb0\x80", b"\xf8\x88\x80\x80\x80", b"gr\xf6\xdfe",
                "\u202eexe.txt".encode(), "\u2024\u2024/up".encode(), "\uff0e\uff0e/up".encode(),
                "\u2215up".encode(), "e\u0301".encode(), "\ufeffbom".encode(), b"\xc3", b"a\xe4/b")
    yield from (b"n" * 259, b"n" * 260, b"n" * 261, b"n" * 1000, b"n" * 65_535, b"d/" * 129 + b"n",
                b"d/" * 130 + b"n", b"d/" * 3000, b"n" * 255 + b"/n", b"n" * 256 + b"/n", "中".encode() * 86,
                "中".encode() * 255, "\U0001f600".encode() * 130)
    yield from (b"vm.zip", b"VM.ZIP", b"vm.zip/", b"vm.zip/a", b"./vm.zip", b"a/../vm.zip", b"vm.zip.",
                b"vm.properties", b"vm.properties/a", b"bin", b"bin/java.exe", b"BIN/JAVA.EXE", b"bin/java.exe/a",
                b"jre", b"jre/bin/java.exe", b"ryn.unpacking", b"RYN.UNPACKING", b"ryn.unpacking/a",
                b"downloadIntermediary/a", b"jvmspecs.properties", b"Windows/a", b"desktop.ini", b"autorun.inf")
    linux, windows = os.fsencode(outside), harness.windows_path(outside).encode()
    for start in (b"a/../", b"a\\..\\", b"/../", b"a/../../b/../"):
        yield from (start + linux + b"/up", start + windows + b"\\up", start + windows.replace(b"\\", b"/") + b"/sub/up")


def named_packs(outside):
    whole = zip_of(VM)
    for number, name in enumerate(names(outside)):
        file = Entry(name, b"x")
        yield Pack(f"{name[:60]!r} in the pack", pack_of(whole, before=[file]))
        yield Pack(f"{name[:60]!r} in the runtime", pack_of(zip_of([*VM, file])))
        other = dataclasses.replace(file, attributes=READ_ONLY | HIDDEN_SYSTEM) if number % 2 else Entry(name, attributes=FOLDER)
        yield Pack(f"{name[:60]!r} in the runtime, attributes {other.attributes}", pack_of(zip_of([other, *VM])))


def corpus():
    """Inputs of the fuzz target "archive", and where they are from."""
    if CORPUS.is_dir() and (files := sorted(path for path in CORPUS.iterdir() if path.is_file())):
        dice = random.Random(3)
        chosen = files if len(files) <= MOST_OF_CORPUS else sorted(dice.sample(files, MOST_OF_CORPUS))
        return [path.read_bytes() for path in chosen], f"from {len(chosen):,} of {len(files):,} inputs that the fuzzer kept"
    # What fuzz/make_seeds.cpp writes, and what a fuzzer makes of it first.
    extra = b"UT\5\0\1" + struct.pack("<I", 1000)
    seed = zip_of([Entry(b"bin/", attributes=FOLDER), Entry(b"bin/a", b"a" * 300, extra=extra),
                   Entry(b"..\\b", b"b", 0, made_by=UNIX), Entry(b"c", b"c", flags=1)])
    dice, inputs = random.Random(4), [b"x" + extra, b"z" + seed]
    for _ in range(400):
        content = bytearray(seed)
        for _ in range(dice.randint(1, 8)):
            at, length = dice.randrange(len(content)), dice.randint(0, 8)
            content[at:at + length] = dice.randbytes(dice.choice((0, length, dice.randint(0, 8))))
        inputs.append(b"z" + bytes(content))
    return inputs, "there was no corpus of a fuzzer: from the seeds of the target, changed at random"


def corpus_packs(inputs):
    whole = zip_of(VM)
    for number, content in enumerate(inputs):
        mode, rest = content[:1], content[1:]
        if mode == b"n":
            entry = Entry(rest[:65_535], b"x")
            yield Pack(f"corpus {number}, a name", pack_of(zip_of([*VM, entry]), before=[entry]))
        elif mode == b"x":
            entry = Entry(b"x", b"x", extra=rest[:65_535])
            yield Pack(f"corpus {number}, an extra field", pack_of(zip_of([*VM, entry]), before=[entry]))
        else:
            yield Pack(f"corpus {number} as the pack", rest)
            yield Pack(f"corpus {number} as the runtime", pack_of(rest))


def entry_name(stored):
    """The name that an entry gets: docs/vm-packs.md."""
    name = stored.split(b"\0")[0].decode("utf-8", "replace")[:MOST_OF_NAME]
    while name[1:2] == ":" or name.startswith(("/", "\\")):
        name = name[2:] if name[1:2] == ":" else name[1:]
    while found := next((cut for cut in PARENTS if cut in name), None):
        name = name.split(found, 1)[1]
    return name


def is_absolute(name):
    return name[1:2] == ":" or name.startswith(("/", "\\"))


def stored_names(content):
    """Every name that a directory in these bytes can give, and in a deflated archive within; some that none gives."""
    found = set()
    for at in (found.start() for found in re.finditer(rb"PK\x01\x02", content)):
        found.add(content[at + 46:at + 46 + int.from_bytes(content[at + 28:at + 30], "little")])
    for at in (found.start() for found in re.finditer(rb"PK\x03\x04", content)):
        if content[at + 8:at + 10] != b"\x08\0":
            continue
        start = at + 30 + sum(int.from_bytes(content[at + place:at + place + 2], "little") for place in (26, 28))
        with contextlib.suppress(zlib.error):
            inner = zlib.decompressobj(-15).decompress(content[start:], 4 << 20)
            if b"PK\1\2" in inner:
                found |= stored_names(inner)
    return found


def plain(path):
    """A path of which what Windows, Wine and Python may write otherwise does not count."""
    return re.sub(r"[^\x20-\x7e]+", "?", path).lower()


def leads_to(content, *folders):
    """Where the names in a pack lead that leave these folders, or hold the mark of a half-unpacked one."""
    found = set()
    for name in {entry_name(name) for name in stored_names(content)}:
        for folder in folders:
            place = posixpath.normpath(f"{folder}/{name}".replace("\\", "/"))
            if not place.startswith(folder + "/") or place.lower().endswith("/ryn.unpacking"):
                found.add(plain(place))
    return found


class Lane:
    """An application of its own, into which one pack after the other is fetched."""

    def __init__(self, bench, server, orphans, number, stack):
        self.server, self.orphans, self.english = server, orphans, fetching.texts()[fetching.ENGLISH]
        self.path = f"/lane{number}.vm"
        self.apps = {}
        small = bench.folder / f"small{number}"
        stack.enter_context(fetching.volume(small, VOLUME))
        for room, folder in ((True, bench.folder / f"lane{number}"), (False, small)):
            app = self.apps[room] = harness.App(bench.host, folder / "app", name=f"lane{number}{'' if room else 's'}", runs=bench.folder)
            app.configure()
            stack.callback(app.end)

    def run(self, pack, shows):
        """Launches with `pack`; returns how that ended, how long it took, the memory, and what should not have been."""
        app = self.apps[pack.room]
        shutil.rmtree(app.folder / "Windows", ignore_errors=True)
        self.server.answers[self.path] = pack.content
        pack_server.write_options(app, **pack_server.without_vm(11, "not__found", self.server.url + self.path, pack.digest))
        start = time.monotonic()
        run = app.start("" if shows else "silent", handles=False, limit=pack.limit, env={"STAND_IN_EXIT": "7"})
        try:
            result = run.wait()
        except AssertionError as error:
            run.end()
            return "hung", pack.limit, 0, [f"{pack.name}: {error}"]
        seconds = time.monotonic() - start
        memory, ending = self.orphans.usage(app.program.name)
        shutil.rmtree(run.record_file.parent)
        boxes = [(box.title, "".join(box.texts)) for box in result.boxes
                 if box.title != self.english[fetching.DOWNLOADING_TITLE]]
        end = self.end(result.exit_code, boxes, shows)
        broken = list(self.strays(app, pack, end))
        if ending:
            broken.append(f"ended by signal {ending}")
        if end == "unexplained":
            broken.append(f"exit code {result.exit_code:#x}, boxes {boxes}")
        if pack.digest and end != "refused":
            broken.append(f"verified, and {end} all the same")
        return end, seconds, memory, [f"{pack.name}: {sentence}" for sentence in broken]

    def end(self, code, boxes, shows):
        """What exit code and boxes say, where the documents know them."""
        if not boxes:
            return "started" if code == 7 else "unexplained"
        *before, (title, text) = boxes
        failure = [(self.english[fetching.EXTRACTION_ERROR_TITLE], self.english[fetching.NO_EXTRACTION])]
        digest = [("MD5 Checksum Verification",
                   "Warning!! MD5 checksum verification for downloaded JVM failed\nInstaller exiting...")]
        no_vm = (code, title) == (106, self.english[fetching.ERROR_TITLE]) and text.startswith(self.english[fetching.NO_VM])
        if no_vm and (before in (failure, digest) if shows else not before):
            return "refused"
        # A box of its own has only a pack that was unpacked and held no VM.
        if no_vm and not before:
            return "without a VM"
        return "unpacked" if code == 0 and text.startswith("Windows error ") and not before else "unexplained"

    def strays(self, app, pack, end):
        """What lies in the application's folder and should not."""
        found = fetching.tree(app.folder)
        by_way, runtime = "Windows/downloadIntermediary", "Windows/resource/jre"
        expected = {app.program.name, app.ryn.name, "Windows", "Windows/jvmspecs", "Windows/jvmspecs/jvmspecs.properties",
                    "Windows/resource", runtime}
        if pack.digest and end == "refused":
            expected.add("Windows/jvmspecs" + self.path[1:])
        if not pack.room and end == "refused":
            expected.add(f"{runtime}/ryn.unpacking")
        places = None
        for path in sorted(found.keys() - expected):
            if path.startswith(runtime + "/") and path != f"{runtime}/ryn.unpacking":
                continue
            if path == by_way and any(other.startswith(by_way + "/") for other in found):
                continue
            inside = path.removeprefix(by_way + "/")
            if inside != path and (inside not in ("vm.zip", "vm.properties") or found[path] < 0):
                continue
            # A name can lead one folder up.
            places = leads_to(pack.content, by_way, runtime) if places is None else places
            own = plain(path)
            if any(place == own or place.startswith(own + "/") for place in places):
                continue
            yield f"left {path}"


class Outside:
    """All places beside the applications that a pack could reach."""

    def __init__(self, bench, folder):
        self.deep = {"C:": bench.host.prefix / "drive_c", str(folder): folder}
        self.flat = ("/", harness.REPOSITORY, bench.folder)
        self.before = self.look()

    def look(self):
        found = {f"{name}/{path}": size for name, folder in self.deep.items() for path, size in fetching.tree(folder).items()
                 if not CACHE.match(path)}
        return found | {f"{folder}/{name}": 0 for folder in self.flat for name in os.listdir(folder)}

    def changes(self):
        before, self.before = self.before, self.look()
        return sorted(path for path in before.keys() | self.before.keys() if before.get(path) != self.before.get(path))


def rows(bench):
    outside_folder = bench.folder / "outside"
    outside_folder.mkdir()
    inputs, origin = corpus()
    kinds = [
        Kind("Packs from the fuzzer", origin + ", as the pack, as the runtime in it, as a name and as an extra field",
             list(corpus_packs(inputs))),
        Kind("Packs cut short", "at every 64th byte, stored and deflated, one in eight with its digest verified too",
             list(cut_packs())),
        Kind("Sizes, counts and places that lie", "each such field of each header of both archives", list(lying_packs())),
        Kind("Names of every kind", "parents, drives, devices, streams, bad UTF-8, names up to 65,535 bytes, those of the"
             " pack's own parts; as files, folders and read-only", list(named_packs(outside_folder))),
        Kind("Bombs", f"up to 10 GiB from a pack of 40 KB, on a disk of {VOLUME >> 20} MiB", list(bomb_packs())),
        Kind("65,536 entries", "in the runtime, under one name, unreadable, or only claimed", list(many_packs())),
    ]
    flips = max(FEWEST_FLIPS, LEAST - sum(len(kind.packs) for kind in kinds))
    kinds.insert(2, Kind("Bits flipped", "1 to 4, half of them in headers", list(flipped_packs(flips))))
    total = sum(len(kind.packs) for kind in kinds)
    good = pack_server.stand_in_pack(bench.folder)
    with contextlib.ExitStack() as stack:
        server = stack.enter_context(pack_server.serve())
        orphans = stack.enter_context(fetching.Orphans())
        stack.callback(clear_cache, bench.host.prefix)
        lanes = queue.SimpleQueue()
        for number in range(LANES):
            lanes.put(Lane(bench, server, orphans, number, stack))
        pool = stack.enter_context(concurrent.futures.ThreadPoolExecutor(LANES))

        def launch(pack, shows):
            lane = lanes.get()
            try:
                return lane.run(pack, shows)
            finally:
                lanes.put(lane)

        def sound(row):
            """A sound pack goes on to start its VM, whatever was fetched before it."""
            packs = [Pack("sound", good, room=room) for room in (True, False)] * LANES
            for end, *_ in pool.map(launch, packs, [True] * len(packs)):
                row.expect(end == "started", f"a sound pack was {end}")

        outside = Outside(bench, outside_folder)
        done, worst = 0, 0
        for kind in kinds:
            row = Row(kind.subject, f"{len(kind.packs):,} packs: {kind.done}", "")
            ends, slowest, memory, left_out, led = collections.Counter(), 0, 0, 0, set()
            for start in range(0, len(kind.packs), AT_ONCE):
                packs = kind.packs[start:start + AT_ONCE]
                if kind is kinds[0]:
                    safe = [pack for pack in packs
                            if not any(is_absolute(entry_name(name)) for name in stored_names(pack.content))]
                    left_out, packs = left_out + len(packs) - len(safe), safe
                for end, seconds, peak, broken in pool.map(launch, packs, [number % 10 == 0 for number in range(len(packs))]):
                    ends[end] += 1
                    slowest, memory = max(slowest, seconds), max(memory, peak)
                    row.broken += broken
                done += len(packs)
                bench.progress(f"{done:,} of {total:,}")
                for path in outside.changes():
                    if path.startswith(f"{outside_folder}/"):
                        led.add(path)
                    else:
                        row.expect(False, f"changed outside, by one of {packs[0].name} to {packs[-1].name}: {path}")
            sound(row)
            worst = max(worst, memory)
            row.expect(memory <= MOST_MEMORY, f"memory grew to {memory >> 20} MiB")
            words = ", ".join(f"{count:,} {end}" for end, count in ends.most_common())
            row.outcome = f"{words}; slowest {slowest:.1f} s; memory at most {memory / (1 << 20):.1f} MiB"
            if left_out:
                row.outcome += f"; {left_out} of them left out, because a name in them leads to a place of this machine"
            if led:
                row.outcome += f"; absolute names behind a parent led where the documents say ({len(led)} files and folders)"
            yield row
        yield Row("All of them", f"{done:,} packs",
                  f"memory at most {worst / (1 << 20):.1f} MiB of the {MOST_MEMORY >> 20} allowed; a sound pack started its"
                  " VM after each kind",
                  "streams of files, which Wine's disks do not have; what Windows' Internet cache keeps, of which Wine's"
                  " keeps every pack",
                  [] if done >= LEAST else [f"fewer than {LEAST:,} packs"])


def clear_cache(prefix):
    """The copies of packs that Wine's Internet cache keeps for ever."""
    for path in prefix.glob("drive_c/users/*/AppData/Local/Microsoft/Windows/INetCache/Content.IE5/*/lane*"):
        path.unlink()
