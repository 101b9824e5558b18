"""The launcher as a file: what it imports, how it is hardened, what it carries."""
import json
import shutil
import struct

import pytest

from harness import FIXTURES, LAUNCHER, install_vm, windows_path

RT_DIALOG, RT_STRING, RT_GROUP_ICON, RT_MANIFEST = 5, 6, 14, 24
ENGLISH = 1033


class Image:
    """A 64-bit PE file, read without help from any tool that could be wrong in the same way as the linker."""

    def __init__(self, path):
        self.bytes = path.read_bytes()
        header = self.unpack("<I", 0x3C)[0]
        assert self.bytes[header:header + 4] == b"PE\0\0"
        self.machine, section_count = self.unpack("<HH", header + 4)
        optional_size, self.characteristics = self.unpack("<HH", header + 20)
        optional = header + 24
        assert self.unpack("<H", optional)[0] == 0x20B
        self.subsystem, self.dll_characteristics = self.unpack("<HH", optional + 68)
        # Address and size of each.
        self.directories = [self.unpack("<II", optional + 112 + 8 * i) for i in range(16)]
        self.sections = {}
        for i in range(section_count):
            name, _, address, size, offset = struct.unpack_from("<8sIIII", self.bytes, optional + optional_size + 40 * i)
            self.sections[name.rstrip(b"\0").decode()] = (address, size, offset)

    def unpack(self, layout, offset):
        return struct.unpack_from(layout, self.bytes, offset)

    def offset(self, address):
        (found,) = (offset + address - start for start, size, offset in self.sections.values()
                    if start <= address < start + size)
        return found

    def imports(self):
        names, at = [], self.offset(self.directories[1][0])
        while (name := self.unpack("<I", at + 12)[0]) != 0:
            start = self.offset(name)
            names.append(self.bytes[start:self.bytes.index(b"\0", start)].decode().lower())
            at += 20
        return names

    def resources(self):
        """(type, name, language) to the bytes of each resource; type and name are numbers or texts."""
        base = self.offset(self.directories[2][0])

        def children(at):
            named, numbered = self.unpack("<HH", base + at + 12)
            for i in range(named + numbered):
                key, child = self.unpack("<II", base + at + 16 + 8 * i)
                if key & 0x80000000:
                    start = base + (key & 0x7FFFFFFF)
                    length = self.unpack("<H", start)[0]
                    key = self.bytes[start + 2:start + 2 + 2 * length].decode("utf-16-le")
                yield key, child & 0x7FFFFFFF

        found = {}
        for kind, names in children(0):
            for name, languages in children(names):
                for language, leaf in children(languages):
                    address, size = self.unpack("<II", base + leaf)
                    start = self.offset(address)
                    found[kind, name, language] = self.bytes[start:start + size]
        return found


@pytest.fixture(scope="module")
def image():
    return Image(LAUNCHER)


def test_imports_only_what_windows_guards(image):
    assert set(image.imports()) <= {"kernel32.dll", "user32.dll", "gdi32.dll", "advapi32.dll", "shell32.dll", "msvcrt.dll"}
    assert image.directories[13] == (0, 0), "delay-loaded imports"


def test_hardening(image):
    high_entropy, dynamic_base, no_execute, relocations_stripped = 0x20, 0x40, 0x100, 0x1
    wanted = high_entropy | dynamic_base | no_execute
    assert image.dll_characteristics & wanted == wanted
    assert image.characteristics & relocations_stripped == 0
    # Without relocations the loader cannot move the program, whatever the flags say.
    assert image.directories[5][0] == image.sections[".reloc"][0] and image.directories[5][1] > 0
    assert (image.machine, image.subsystem) == (0x8664, 2)


def test_size_without_translations(image):
    translations = sum(len(content) for (kind, _, language), content in image.resources().items()
                       if kind in (RT_STRING, RT_DIALOG) and language != ENGLISH)
    assert len(image.bytes) - translations <= 300 * 1024


def test_resources(image):
    resources = image.resources()
    (manifest,) = (content for (kind, name, _), content in resources.items() if (kind, name) == (RT_MANIFEST, 1))
    assert b'level="asInvoker"' in manifest and b'name="Brivant.Launcher"' in manifest
    assert any(kind == RT_GROUP_ICON and name == "DOWNLOADING JVM PACK" for kind, name, _ in resources)


def test_planted_libraries_are_not_loaded(app):
    """Names that programs are commonly made to load from their own folder, those that the launcher loads at run
    time among them. All three kinds of places are poisoned: beside the program, current folder, PATH. (Not
    version.dll, which Wine's own user32.dll imports, so that the launcher has no say in where it comes from.)"""
    names = ["wininet", "netapi32", "authz", "uxtheme", "cryptbase", "dwmapi", "comctl32", "profapi", "cryptsp", "rsaenh",
             "secur32", "sspicli", "propsys", "winmm", "ws2_32", "mpr", "userenv", "riched20"]
    poisoned = [app.folder, app.folder.parent / "current", app.folder.parent / "on path"]
    for folder in poisoned:
        folder.mkdir(exist_ok=True)
        for name in names:
            shutil.copyfile(FIXTURES / "marker.dll", folder / f"{name}.dll")
    marks = app.folder.parent / "marks"
    options = {"folder": poisoned[1], "path": windows_path(poisoned[2]), "env": {"MARKER_FILE": windows_path(marks)},
               # Wine would take its own libraries first.
               "host_environment": {"WINEDLLOVERRIDES": ",".join(names) + "=n,b"}}

    app.configure(ryn__nl__designer__jvm__securefolder__check="true")
    vm = install_vm(app.folder.parent / "vm")
    app.run(vm=vm, **options)
    assert app.run(**options).exit_code == 106  # with a box
    assert not marks.exists(), marks.read_text()

    # A program that does not look after itself falls for every single one.
    victim = shutil.copyfile(vm, app.folder / "victim.exe")
    options["env"]["STAND_IN_LOAD"] = ";".join(f"{name}.dll" for name in names)
    app.run(command=f'"{windows_path(victim)}"', **options)
    found = {json.loads(line) for line in marks.read_text().splitlines()}
    assert found == {windows_path(app.folder / f"{name}.dll") for name in names}
