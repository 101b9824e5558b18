"""The search that description files drive."""
from harness import SYSTEM_PATH, install_vm, windows_path


def describe(app, *descriptions):
    folder = app.folder / "jvmspecs"
    folder.mkdir(exist_ok=True)
    options = {"option": "withoutvm", "without.vm.search.option": "10", "jvmspec.applicable": "true",
               "jvmspec.total.num": len(descriptions)}
    for number, description in enumerate(descriptions):
        options[f"jvmspec.{number}"] = f"{number}.txt"
        (folder / f"{number}.txt").write_text(description)
    (folder / "jvmspecs.properties").write_text("".join(f"build.{key}={value}\n" for key, value in options.items()))


def test_takes_the_vm_of_the_first_description_that_fits(app, registry):
    describe(app, "# nothing", "PATH_HINT:\nold\n/:\nPLATFORM_HINT:\nSolaris\n",
             "JVM_EXE: javaw.exe\nPATH_HINT:\n%VMS%\\*\n\\HKEY_LOCAL_MACHINE\\SOFTWARE\\Vendor\\VM\n")
    install_vm(app.folder / "old", "sun_25")
    install_vm(app.folder.parent / "vms" / "nine", "sun_9")
    registered = install_vm(app.folder.parent / "registered", "sun_24")
    registry.add({r"SOFTWARE\Vendor\VM\24": {"JavaHome": windows_path(registered.parents[1])}})
    path = f"{SYSTEM_PATH};{windows_path(app.folder / 'old' / 'bin')}"
    result = app.run(path=path, env={"VMS": windows_path(app.folder.parent / "vms")})
    assert result.boxes == []
    assert result.record["program"] == windows_path(registered)
