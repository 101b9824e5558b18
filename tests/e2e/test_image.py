"""The launcher as a file: what it imports, how it is hardened, what it carries."""
import re
import shutil

from harness import BUILD, FIXTURES, LAUNCHER, REPOSITORY, image_bits, install_vm, own_fixtures, read_facts, windows_path

RT_GROUP_ICON, RT_MANIFEST = 14, 24


def test_imports_what_is_documented(image):
    line = re.search(r"The import table names (.*?) and nothing else", (REPOSITORY / "docs" / "security.md").read_text(), re.DOTALL)
    documented = {f"{name}.dll" for name in re.findall(r"`(\w+)`", line[1])}
    assert {entry.dll.decode().lower() for entry in image.DIRECTORY_ENTRY_IMPORT} == documented
    assert not hasattr(image, "DIRECTORY_ENTRY_DELAY_IMPORT")


def test_hardening(image):
    flags = image.OPTIONAL_HEADER
    bits = image_bits(LAUNCHER)
    assert flags.IMAGE_DLLCHARACTERISTICS_HIGH_ENTROPY_VA == (bits == 64) and flags.IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE
    assert flags.IMAGE_DLLCHARACTERISTICS_NX_COMPAT
    # Without relocations the loader cannot move the program, whatever the flags say.
    assert not image.FILE_HEADER.IMAGE_FILE_RELOCS_STRIPPED and image.DIRECTORY_ENTRY_BASERELOC
    assert (image.FILE_HEADER.Machine, flags.Subsystem) == ({32: 0x14C, 64: 0x8664}[bits], 2)


def test_size(image):
    assert len(image.__data__) <= {32: 344, 64: 320}[image_bits(LAUNCHER)] * 1024, "with all languages"


def test_resources(resources):
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
            shutil.copyfile(own_fixtures() / "marker.dll", folder / f"{name}.dll")
    marks = app.folder.parent / "marks"
    options = {"folder": poisoned[1], "path": windows_path(poisoned[2]), "env": {"MARKER_FILE": windows_path(marks)},
               # Wine would take its own libraries first.
               "host_environment": {"WINEDLLOVERRIDES": ",".join(names) + "=n,b"}}

    app.configure(ryn__nl__designer__jvm__securefolder__check="true")
    vm = install_vm(app.folder.parent / "vm", bits=image_bits(LAUNCHER))
    app.run(vm=vm, **options)
    assert app.run(**options).exit_code == 106  # with a box
    # What its own initialisers ask Windows for needs this one. Other programs would not live without it.
    if image_bits(LAUNCHER) == 64:
        maker = shutil.copyfile(BUILD / "ryn" / "ryn.exe", app.folder / "ryn.exe")
        shutil.copyfile(FIXTURES / "marker.dll", app.folder / "crypt32.dll")
        app.run(command=f'"{windows_path(maker)}" explain .', **options | {"host_environment": {"WINEDLLOVERRIDES": "crypt32=n,b"}})
    assert not marks.exists(), read_facts(marks, "library")

    # A program that does not look after itself falls for every single one.
    victim = shutil.copyfile(vm, app.folder / "victim.exe")
    options["env"]["STAND_IN_LOAD"] = ";".join(f"{name}.dll" for name in names)
    app.run(command=f'"{windows_path(victim)}"', **options)
    found = {path for facts in read_facts(marks, "library") for path in facts["library"]}
    assert found == {windows_path(app.folder / f"{name}.dll") for name in names}
