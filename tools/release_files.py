"""Makes the files of a release of a folder: release_files.py <folder> <target> <version> <date> <sources of libraries>

The same folder gives the same bytes: order, times and rights in the archives are fixed.
"""
import calendar
import datetime
import gzip
import hashlib
import pathlib
import re
import subprocess
import sys
import tarfile
import time
import uuid
import zipfile

from cyclonedx.contrib.license.factories import LicenseFactory
from cyclonedx.model import HashAlgorithm, HashType
from cyclonedx.model.bom import Bom
from cyclonedx.model.component import Component, ComponentType
from cyclonedx.output.json import JsonV1Dot6
from packageurl import PackageURL

FOLDER, TARGET = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
VERSION, DATE, LIBRARIES = sys.argv[3], time.strptime(sys.argv[4], "%Y-%m-%d"), pathlib.Path(sys.argv[5])
SECONDS = calendar.timegm(DATE)
GROUP = "com.vantu.ryn"
# Paths in the folder: artefact, classifier, type. Maven's plugins expect "exe" of programs for any system.
ARTEFACTS = {
    "ryn": ("ryn", "linux-x86_64", "exe"),
    "ryn.exe": ("ryn", "windows-x86_64", "exe"),
    "launcher/x64/launcher.exe": ("launcher", "windows-x86_64", "exe"),
    "launcher/x86/launcher.exe": ("launcher", "windows-x86_32", "exe"),
    "lib/ryn-start.jar": ("ryn-start", "", "jar"),
    "lib/Verify.jar": ("verify", "", "jar"),
}


def sha256(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()


def version(text, *names):
    """The values of these macros with dots between them."""
    return ".".join(re.search(rf'^ *# *define {name} +"?([\d.]+)', text, re.MULTILINE).group(1) for name in names)


def macros(compiler, header="cstddef"):
    return subprocess.run([compiler, "-E", "-dM", "-x", "c++", "-"], check=True, capture_output=True, text=True,
                          input=f"#include <{header}>\n").stdout


def libraries():
    """Name, version and licence of what is linked into the programs."""
    windows = macros("x86_64-w64-mingw32-g++-posix")
    mingw = version(windows, *(f"__MINGW64_VERSION_{part}" for part in ("MAJOR", "MINOR", "BUGFIX")))
    host = version(macros("g++"), "__GNUC__", "__GNUC_MINOR__", "__GNUC_PATCHLEVEL__")
    # This one's macros know its major version alone.
    gcc = subprocess.run(["dpkg-query", "--show", "--showformat=${Version}", "g++-mingw-w64-x86-64-posix"], check=True,
                         capture_output=True, text=True).stdout.split("-")[0]
    exception = "GPL-3.0-or-later WITH GCC-exception-3.1"
    return [
        ("zlib", version((LIBRARIES / "zlib/zlib.h").read_text("latin-1"), "ZLIB_VERSION"), "Zlib"),
        ("minizip", re.search(r"Version ([\d.]+)", (LIBRARIES / "minizip/unzip.h").read_text("latin-1")).group(1), "Zlib"),
        ("gcc-runtime", gcc, exception), *([("gcc-runtime", host, exception)] if host != gcc else []),
        ("mingw-w64-runtime", mingw, "ZPL-2.1"),
        ("winpthreads", mingw, "MIT AND BSD-3-Clause"),
        ("CLI11", version(macros("g++", "CLI/Version.hpp"), "CLI11_VERSION"), "BSD-3-Clause"),
        ("nlohmann-json", version(macros("g++", "nlohmann/json.hpp"),
                                  *(f"NLOHMANN_JSON_VERSION_{part}" for part in ("MAJOR", "MINOR", "PATCH"))), "MIT"),
    ]


def write_bill():
    licences = LicenseFactory()
    bill = Bom(serial_number=uuid.uuid5(uuid.NAMESPACE_URL, f"pkg:generic/ryn-launcher@{VERSION}"))
    bill.metadata.timestamp = datetime.datetime.fromtimestamp(SECONDS, datetime.timezone.utc)
    bill.metadata.component = product = Component(
        name="ryn-launcher", version=VERSION, type=ComponentType.APPLICATION, bom_ref="ryn-launcher",
        licenses=[licences.make_from_string("MIT")], purl=PackageURL("generic", None, "ryn-launcher", VERSION))
    parts = [Component(name=path, version=VERSION, type=ComponentType.FILE, bom_ref=path,
                       licenses=[licences.make_from_string("MIT")],
                       hashes=[HashType(alg=HashAlgorithm.SHA_256, content=sha256(FOLDER / path))])
             for path in sorted(ARTEFACTS) if (FOLDER / path).exists()]
    used = [Component(name=name, version=version, type=ComponentType.LIBRARY, bom_ref=f"{name}@{version}",
                      licenses=[licences.make_from_string(licence)], purl=PackageURL("generic", None, name, version))
            for name, version, licence in libraries()]
    for part in parts:
        bill.components.add(part)
    for library in used:
        bill.components.add(library)
    bill.register_dependency(product, parts)
    for part in parts:
        bill.register_dependency(part, linked(part.name, used))
    text = JsonV1Dot6(bill).output_as_string(indent=2)
    (FOLDER / "sbom.cdx.json").write_text(text + "\n", "utf-8")
    (TARGET / "sbom.cdx.json").write_text(text + "\n", "utf-8")


def linked(path, used):
    """Those of the libraries that a product contains."""
    if path.endswith(".jar"):
        return []
    names = {"zlib", "minizip", "gcc-runtime"}
    if path.endswith(".exe"):
        names |= {"mingw-w64-runtime", "winpthreads"}
    if path.startswith("ryn"):
        names |= {"CLI11", "nlohmann-json"}
    # Of two compilers that of Windows is the first.
    runtimes = [library for library in used if library.name == "gcc-runtime"]
    other = runtimes[-1 if path.endswith(".exe") else 0] if len(runtimes) > 1 else None
    return [library for library in used if library.name in names and library is not other]


def is_program(path):
    return path.suffix in (".sh", ".exe") or path == FOLDER / "ryn"


def write_archives():
    files = sorted(path for path in FOLDER.rglob("*") if path.is_file())
    with zipfile.ZipFile(TARGET / f"{FOLDER.name}.zip", "w") as archive:
        for path in files:
            entry = zipfile.ZipInfo(str(path.relative_to(FOLDER.parent)), DATE[:6])
            entry.create_system = 3
            entry.external_attr = (0o100755 if is_program(path) else 0o100644) << 16
            entry.compress_type = zipfile.ZIP_DEFLATED
            archive.writestr(entry, path.read_bytes())
    with open(TARGET / f"{FOLDER.name}.tar.gz", "wb") as file, \
            gzip.GzipFile("", "wb", 9, file, mtime=SECONDS) as packed, tarfile.open(fileobj=packed, mode="w") as archive:
        for path in files:
            entry = tarfile.TarInfo(str(path.relative_to(FOLDER.parent)))
            entry.size, entry.mtime = path.stat().st_size, SECONDS
            entry.mode = 0o755 if is_program(path) else 0o644
            with open(path, "rb") as content:
                archive.addfile(entry, content)


def write_maven():
    for path, (artefact, classifier, kind) in ARTEFACTS.items():
        if not (FOLDER / path).exists():
            continue
        target = TARGET / "maven" / GROUP.replace(".", "/") / artefact / VERSION
        target.mkdir(parents=True, exist_ok=True)
        stem = f"{artefact}-{VERSION}"
        made = [target / f"{stem}{'-' * bool(classifier)}{classifier}.{kind}", target / f"{stem}.pom"]
        made[0].write_bytes((FOLDER / path).read_bytes())
        made[1].write_text(f"""<?xml version="1.0" encoding="UTF-8"?>
<project xmlns="http://maven.apache.org/POM/4.0.0">
  <modelVersion>4.0.0</modelVersion>
  <groupId>{GROUP}</groupId>
  <artifactId>{artefact}</artifactId>
  <version>{VERSION}</version>
  <packaging>{kind if kind == "jar" else "pom"}</packaging>
  <licenses><license><name>MIT</name></license></licenses>
</project>
""")
        for file in made:
            file.with_name(file.name + ".sha1").write_text(hashlib.sha1(file.read_bytes()).hexdigest())


write_bill()
write_archives()
write_maven()
(TARGET / "SHA256SUMS").write_text("".join(
    f"{sha256(path)}  {path.name}\n" for path in sorted(TARGET.iterdir()) if path.is_file()))
