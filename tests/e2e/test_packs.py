"""VM packs from real servers on the loopback interface: the download and the steps behind it by themselves, where
their console texts can be read, and whole launches of builds that ship or fetch a VM."""
import hashlib
import os
import threading

import pytest
from pyftpdlib.authorizers import DummyAuthorizer
from pyftpdlib.handlers import DTPHandler, FTPHandler
from pyftpdlib.servers import ThreadedFTPServer

from harness import (ERROR_TITLE, LIMIT_SECONDS, NO_VALID_VM, Run, own_fixtures, wait_until,
                     windows_path)
from pack_server import archive, serve, stand_in_pack, without_vm, write_options

WAIT = "\nDownloading VM Pack - Please Wait!!!\n"
# Wine's wininet leaves this error behind when it succeeds.
OPENED = "\nError in opening internet connection with URL\n\nWininet Error code: 12006\n"
FAILED = "\nAttempt to download VM failed"
NO_CONNECTION = ("Network Connection Error", "Could not connect to the specified URL")
NO_DOWNLOAD = ("JVM Download Error", "Download of VM pack failed. Installer exiting...")
PROGRESS = ("Downloading", "Downloading Java Virtual Machine pack")
TITLE = PROGRESS[0]


@pytest.fixture
def hold(host):
    """hold(): holds a server's answer until the progress dialog is on the screen, where hold.shows says that one comes."""
    def wait():
        if wait.shows:
            host.newest_run.wait_for_dialog(title=TITLE, text=PROGRESS[1])
    wait.shows = False
    return wait


@pytest.fixture
def web(hold):
    with serve(hold) as server:
        yield server


@pytest.fixture
def ftp(hold, tmp_path):
    """The address of an FTP server and the folder that it serves."""
    folder = tmp_path / "ftp"
    folder.mkdir()
    authorizer = DummyAuthorizer()
    authorizer.add_anonymous(str(folder))

    class Transfer(DTPHandler):
        def push_with_producer(self, producer):
            hold()
            super().push_with_producer(producer)
    handler = type("Anonymous", (FTPHandler,), {"authorizer": authorizer, "dtp_handler": Transfer})
    # The port cannot be chosen; an address of this process's own keeps test runs apart.
    process = os.getpid()
    server = ThreadedFTPServer((f"127.{1 + (process >> 16) % 254}.{process >> 8 & 255}.{process & 255}", 21), handler)
    thread = threading.Thread(target=server.serve_forever, kwargs={"timeout": 0.1})
    thread.start()
    yield f"ftp://{server.address[0]}", folder
    server.close_all()
    thread.join()


class Answer:
    """What the probe said: its output before the result, the result, the boxes as pairs of title and text."""

    def __init__(self, result):
        output = result.stdout.decode("utf-8").replace("\r\n", "\n")
        self.output, self.result = output.removesuffix("\n").rsplit("\nresult: ", 1)
        self.boxes = [(box.title, box.text) for box in result.boxes]


@pytest.fixture
def probe(host, hold, tmp_path):
    runs = []

    def start(*arguments, press="yes"):
        hold.shows = "progress" in arguments and "quiet" not in arguments
        command = " ".join(f'"{argument}"' for argument in (windows_path(own_fixtures() / "pack_probe.exe"), *arguments))
        request = [("command", command), ("handles", "own"), ("press", press)]
        runs.append(Run(host, tmp_path / f"run{len(runs)}", request, None, LIMIT_SECONDS, None))
        return runs[-1]

    def answer(*arguments):
        return Answer(start(*arguments).wait())

    answer.start = start
    yield answer
    for run in runs:
        run.end()


@pytest.fixture
def target(tmp_path):
    folder = tmp_path / "Prüf ordner 中文"
    folder.mkdir()
    return folder / "jvmspecsjre.vm"


@pytest.fixture
def download(probe, target):
    """download(url, flags...): the answer, and `file`, what is at the destination then."""
    def run(url, *flags, target=target):
        answer = probe("download", url, windows_path(target) if target else "", *flags)
        answer.file = target.read_bytes() if target and target.is_file() else None
        return answer
    return run


def test_whole_file_over_http(web, download):
    web.answers["/jre.vm"] = content = os.urandom(3_000_000)
    answer = download(web.url + "/jre.vm")
    assert (answer.result, answer.boxes, answer.file) == ("true", [], content)
    assert answer.output == WAIT + OPENED + "===== "

    answer = download(web.url + "/jre.vm", "quiet", "progress")
    assert (answer.result, answer.boxes, answer.file, answer.output) == ("true", [], content, "")


def test_answers_of_all_kinds(web, download):
    content = os.urandom(5000)

    def redirect(handler):
        handler.begin(0, status=302, Location="/jre.vm")

    def chunked(handler):
        handler.begin(Transfer_Encoding="chunked")
        for start in range(0, len(content), 1999):
            part = content[start:start + 1999]
            handler.wfile.write(b"%x\r\n%b\r\n" % (len(part), part))
        handler.wfile.write(b"0\r\n\r\n")

    def short(handler):
        handler.begin(2 * len(content))
        handler.wfile.write(content)
        handler.close_connection = True

    web.answers |= {"/jre.vm": content, "/redirect": redirect, "/chunked": chunked, "/short": short, "/empty": b""}
    for path, expected in {"/redirect": content, "/chunked": content, "/short": content, "/empty": b""}.items():
        for flags in ([], ["progress"]):
            answer = download(web.url + path, *flags)
            assert (answer.result, answer.file) == ("true", expected), (path, flags)


REFUSED = "\nCould not connect to the specified URL\nHTTP Status code: {}\n"


@pytest.mark.parametrize("url, target, output, boxes", [
    ("{}/none.vm", "jre.vm", REFUSED.format(404), [NO_CONNECTION]),
    ("http://127.0.0.1:1/jre.vm", "jre.vm", REFUSED.format(0), [NO_CONNECTION]),
    ("http:nonsense", "jre.vm", REFUSED.format(0), [NO_CONNECTION]),
    ("HTTP://127.0.0.1/jre.vm", "jre.vm", WAIT + FAILED, [PROGRESS, NO_DOWNLOAD]),
    # Filled up to more than anybody serves.
    ("{:/<16385}jre.vm", "jre.vm", WAIT + FAILED, [PROGRESS, NO_DOWNLOAD]),
    # A device, wherever it stands, which would wait for its cable.
    ("{}/jre.vm", "aux.vm", WAIT + OPENED + FAILED, [PROGRESS, NO_DOWNLOAD]),
    ("{}/jre.vm", "missing/jre.vm", WAIT + OPENED + FAILED, [PROGRESS, NO_DOWNLOAD]),
    ("{}/jre.vm", None, WAIT + OPENED + FAILED, [PROGRESS, NO_DOWNLOAD]),
])
def test_download_that_fails(web, download, tmp_path, url, target, output, boxes):
    web.answers["/jre.vm"] = b"x"
    for flags, shown, ending in (((), [], output), (("progress",), boxes, ""), (("progress", "quiet"), [], None)):
        answer = download(url.format(web.url), *flags, target=target and tmp_path / target)
        assert (answer.result, answer.file, answer.boxes) == ("false", None, shown), flags
        assert answer.output == "" if ending is None else answer.output.endswith(ending), flags
        assert ("Could not" in answer.output) == ("Could not" in (ending or "")), flags


def test_progress_dialog(host, web, download):
    def large(handler):
        handler.begin(73_400_320)
        # Only while data arrive does the dialog answer.
        seen = threading.Thread(target=host.newest_run.wait_for_dialog,
                                kwargs={"title": TITLE, "text": PROGRESS[1], "progressEnd": "6144"})
        seen.start()
        while seen.is_alive():
            handler.wfile.write(bytes(1024))
            seen.join(0.02)
        handler.close_connection = True
    web.answers["/jre.vm"] = large
    answer = download(web.url + "/jre.vm", "progress")
    assert (answer.result, answer.boxes) == ("true", [PROGRESS])


WM_CLOSE, WM_INITDIALOG, WM_TIMER = 0x10, 0x110, 0x113


@pytest.mark.parametrize("messages, whole", [([(WM_CLOSE,)], False), ([(WM_INITDIALOG, 0, 1), (WM_TIMER, 1)], True)])
def test_messages_during_a_download(host, web, download, target, messages, whole):
    content = os.urandom(4_000_000)

    def large(handler):
        handler.begin(len(content))
        handler.wfile.write(content[:100_000])
        wait_until(target.exists, "start of the transfer")
        for message in messages:
            host.post(TITLE, *message)
        handler.wfile.write(content[100_000:])
    web.answers["/jre.vm"] = large
    answer = download(web.url + "/jre.vm", "progress")
    expected = ("true", content) if whole else ("false", None)
    assert ((answer.result, answer.file), answer.boxes) == (expected, [PROGRESS])


def test_ftp(ftp, download):
    address, folder = ftp
    content = os.urandom(1_500_000)
    (folder / "sub").mkdir()
    (folder / "sub" / "jre.vm").write_bytes(content)
    # The port does not count.
    answer = download(f"{address}:2121/sub/jre.vm")
    assert (answer.result, answer.file, answer.output) == ("true", content, WAIT + "==")
    answer = download(f"{address}/sub/jre.vm", "progress")
    assert (answer.result, answer.file, answer.boxes) == ("true", content, [PROGRESS])

    for url, code in ((address + "/none.vm", 12003), ("ftp://127.255.255.254/jre.vm", 12029)):
        answer = download(url)
        assert answer.output == f"{WAIT}\nCould not connect to the specified URL\nWininet Error code: {code}\n"
        assert (answer.result, answer.boxes) == ("false", [])
        answer = download(url, "progress")
        assert (answer.result, answer.boxes) == ("false", [NO_CONNECTION])


PACK = archive({"vm.zip": archive({"bin/java.exe": "java", "lib/modules": "m" * 50_000}), "vm.properties": os.urandom(2000)})
VERIFYING = "\nVerifying the downloaded JVM with MD5 checksum specified\n\n"
EXTRACTING = "\nExtracting VM Pack. Please wait!!!\n"


@pytest.fixture
def fetch(web, probe, tmp_path):
    """fetch(pack, flags..., digest, name): the answer, and `files`, what is in the application's folder then."""
    folder = tmp_path / "app ä"
    (folder / "Windows" / "jvmspecs").mkdir(parents=True)
    options = folder / "Windows" / "jvmspecs" / "jvmspecs.properties"
    options.touch()

    def run(pack, *flags, digest="-", name="jre.vm"):
        web.answers["/d/" + name] = pack
        answer = probe("fetch", f"{web.url}/d/{name}", windows_path(folder), digest, *flags)
        answer.files = sorted(str(path.relative_to(folder)) for path in folder.rglob("*")
                              if path.is_file() and path != options)
        answer.home = windows_path(folder / "Windows" / "resource" / "jre")
        return answer

    run.start = lambda *flags: probe.start("fetch", web.url + "/d/jre.vm", windows_path(folder), "-", *flags, press="no")
    return run


VM_FILES = ["Windows/resource/jre/bin/java.exe", "Windows/resource/jre/lib/modules"]


def test_fetched_pack(fetch):
    answer = fetch(PACK, digest=hashlib.md5(PACK).hexdigest())
    assert answer.result == answer.home + r"\\bin\java.exe"
    assert answer.output == (WAIT + OPENED + VERIFYING + "MD5 checksum verification for downloaded JVM passed" +
                             EXTRACTING + "\nExtracted the JVM pack successfully!!\n")
    assert answer.files == VM_FILES
    answer = fetch(PACK, "quiet")
    assert (answer.output, answer.files, answer.result) == ("", VM_FILES, answer.home + r"\\bin\java.exe")


EXTRACTION_FAILED = "Could not extract the downloaded VM pack. Installer exiting..."
NO_ARCHIVE = (EXTRACTING + "\n" + EXTRACTION_FAILED, [PROGRESS, ("JVM Extraction Error", EXTRACTION_FAILED)], [])
NO_PACK = ("\nThe file specified is not a valid VM pack\n",
           [("Invalid VM Pack", "The file specified for download is not a valid VM pack")], [])


@pytest.mark.parametrize("pack, options, output, boxes, files", [
    (PACK, {"digest": hashlib.md5(PACK).hexdigest().upper()},
     VERIFYING + "Warning!! MD5 checksum verification for downloaded JVM failed. Installer exiting...",
     [PROGRESS, ("MD5 Checksum Verification", "digest failure")], ["Windows/jvmspecsjre.vm"]),
    (b"no archive", {}, *NO_ARCHIVE),
    (PACK[:len(PACK) // 2], {}, *NO_ARCHIVE),
    (archive({"sub/vm.zip": archive({})}), {}, *NO_ARCHIVE),
    (archive({"vm.zip": archive({"readme.txt": "x"})}), {}, EXTRACTING + "\nExtracted the JVM pack successfully!!\n",
     [PROGRESS], ["Windows/resource/jre/readme.txt"]),
    (PACK, {"name": "jre.zip"}, *NO_PACK),
    (PACK, {"name": "jre.VM"}, *NO_PACK),
    # A name all the same.
    (b"no archive", {"name": ".vm"}, *NO_ARCHIVE),
])
def test_pack_that_fails(fetch, tmp_path, pack, options, output, boxes, files):
    if output == NO_ARCHIVE[0]:
        # What was there before is not what was asked for.
        (tmp_path / "app ä" / "Windows" / "resource" / "jre" / "bin").mkdir(parents=True)
    for flags, shown in (((), []), (("progress",), boxes), (("progress", "quiet"), [])):
        answer = fetch(pack, *flags, **options)
        assert (answer.result, answer.boxes, answer.files) == ("", shown, files), flags
        assert flags or answer.output.endswith(output)
    # The digest's own line end comes also from a silent launch.
    assert answer.output.strip() == ""


@pytest.mark.parametrize("ending", ["whole", "damaged", "killed"])
def test_two_first_starts(web, fetch, tmp_path, ending):
    """The second waits for the first, whatever becomes of it, and fetches only when that one failed."""
    go, requests = threading.Event(), []

    def first(handler):
        requests.append(1)
        handler.begin(len(PACK))
        assert go.wait(LIMIT_SECONDS)
        web.answers["/d/jre.vm"] = second
        handler.wfile.write(bytes(len(PACK)) if ending == "damaged" else PACK)

    def second(handler):
        requests.append(2)
        handler.begin(len(PACK))
        handler.wfile.write(PACK)
    web.answers["/d/jre.vm"] = first
    # Nobody presses the button of its box.
    one = fetch.start("progress")
    wait_until(lambda: requests, "first request")
    two = fetch.start()
    output = tmp_path / "run1" / "stdout"
    wait_until(lambda: b"\nWaiting for another start to fetch the VM pack\r\n" in output.read_bytes(), "waiting")
    if ending == "killed":
        web.answers["/d/jre.vm"] = second
        one.end()
    go.set()
    answer = Answer(two.wait())
    assert answer.result.endswith(r"\Windows\resource\jre\\bin\java.exe")
    assert requests == ([1] if ending == "whole" else [1, 2])
    wait_until(lambda: one.is_running() == (ending == "damaged"), "first start to wait in a box or to end")


@pytest.fixture
def vm_pack(web, tmp_path):
    """A pack with a stand-in VM: its URL and its digest."""
    web.answers["/jre.vm"] = pack = stand_in_pack(tmp_path)
    return web.url + "/jre.vm", hashlib.md5(pack).hexdigest()


NO_VM = (ERROR_TITLE, f"{NO_VALID_VM}\n\nRequired Java VM : ALL")


def boxes_of(result):
    return [(box.title, box.text) for box in result.boxes]


def program_of(result):
    """The VM's program below its application; the path of an unpacked one has a separator twice."""
    return result.record["program"].replace("\\\\", "\\").split("\\app\\")[1].replace("\\", "/")


@pytest.fixture
def dpi(host, request):
    """Dots per inch of the screen."""
    key = (r"HKCU\Control Panel\Desktop", "/v", "LogPixels", "/f")
    host.wine("reg", "add", *key, "/t", "REG_DWORD", "/d", request.param)
    yield request.param
    host.wine("reg", "delete", *key)


@pytest.mark.parametrize("folder, dpi, option, pack", [
    ("Windows", 96, 11, "not__found"), ("Windows_Pure_64_Bit", 192, 12, "dont__search")], indirect=["dpi"])
def test_build_that_fetches_its_vm(app, hold, vm_pack, folder, dpi, option, pack):
    hold.shows = True
    write_options(app, folder, **without_vm(option, pack, *vm_pack))
    result = app.run(env={"STAND_IN_EXIT": "7"})
    assert (boxes_of(result), result.exit_code) == ([PROGRESS], 7)
    assert result.box.progress_width == 220 * dpi // 96
    assert program_of(result) == folder + "/resource/jre/bin/javaw.exe"
    assert sorted(path.name for path in (app.folder / folder).iterdir()) == ["jvmspecs", "resource"]
    # What was unpacked is the VM of a build that ships one.
    write_options(app, folder, option="withvm", with__vm__search__option=21)
    assert program_of(app.run()) == folder + "/resource/jre/bin/javaw.exe"


@pytest.mark.parametrize("last_seen", ["resource/jre/bin/java.exe", "downloadIntermediary/0"])
def test_start_killed_while_unpacking(app, web, vm_pack, last_seen):
    """Also where a whole VM was before: the half one is not used, and fetching again heals it."""
    fetching = without_vm(12, "dont__search", *vm_pack)
    shipping = {"option": "withvm", "with__vm__search__option": 21}
    many = {str(number): "x" * 4000 for number in range(3000)}
    inner = archive({"bin/java.exe": "new"} | many)
    web.answers["/big.vm"] = archive(many | {"vm.zip": inner} if last_seen.endswith("0") else {"vm.zip": inner})
    write_options(app, **fetching)
    assert app.run().exit_code == 0
    write_options(app, **fetching | {"without__vm__direct__download__url": web.url + "/big.vm",
                                     "without__vm__dont__search__download__url__md5Checksum__applicable": "false"})
    run = app.start()
    seen = app.folder / "Windows" / last_seen
    wait_until(lambda: seen.exists() and seen.stat().st_size < 5000, "unpacking")
    run.end()
    assert not (app.folder / "Windows" / "resource" / "jre" / "2999").exists(), "the start was too quick for this test"
    write_options(app, **shipping)
    result = app.run()
    assert (boxes_of(result), result.exit_code) == ([NO_VM], 106)
    write_options(app, **fetching)
    assert app.run(env={"STAND_IN_EXIT": "7"}).exit_code == 7
    write_options(app, **shipping)
    assert program_of(app.run()) == "Windows/resource/jre/bin/javaw.exe"


def test_full_disk_while_unpacking(app, hold, vm_pack):
    """/dev/full is the one file of the runtime for which no room is left."""
    hold.shows = True
    bin_folder = app.folder / "Windows" / "resource" / "jre" / "bin"
    bin_folder.mkdir(parents=True)
    (bin_folder / "java.exe").symlink_to("/dev/full")
    write_options(app, **without_vm(12, "dont__search", *vm_pack))
    result = app.run()
    assert (boxes_of(result), result.exit_code) == ([PROGRESS, ("JVM Extraction Error", EXTRACTION_FAILED), NO_VM], 106)
    write_options(app, option="withvm", with__vm__search__option=21)
    assert app.run().exit_code == 106
    (bin_folder / "java.exe").unlink()
    write_options(app, **without_vm(12, "dont__search", *vm_pack))
    assert app.run(env={"STAND_IN_EXIT": "7"}).exit_code == 7


@pytest.mark.parametrize("option, pack, ending", [(11, "not__found", "exiting"), (12, "dont__search", "Exiting")])
def test_fetch_that_fails_ends_the_launch(app, hold, vm_pack, option, pack, ending):
    url, digest = vm_pack
    hold.shows = True
    write_options(app, **without_vm(option, pack, url, digest.upper()))
    warning = ("MD5 Checksum Verification",
               f"Warning!! MD5 checksum verification for downloaded JVM failed\nInstaller {ending}...")
    result = app.run()
    assert (boxes_of(result), result.exit_code) == ([PROGRESS, warning, NO_VM], 106)
    hold.shows = False
    result = app.run("silent")
    assert (boxes_of(result), result.exit_code) == ([NO_VM], 106)
    assert b"Download" not in result.stdout
