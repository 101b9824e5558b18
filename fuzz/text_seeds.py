"""Writes the inputs of the unit tests' tables, and a few scripts, as seeds of the fuzz targets."""

import ast
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
LITERALS = re.compile(r'(?:L?"(?:[^"\\\n]|\\.)*"\s*)+')
# Target, test, and what the target wants in front of each.
SOURCES = [
    ('property_file', 'properties/property_file_test.cpp', ''),
    ('description', 'vmsearch/vm_description_test.cpp', ''),
    ('command_line', 'launcher/command_line_test.cpp', ''),
    ('command_line', 'launcher/quoting_rows.h', ''),
    ('version', 'vmsearch/vm_version_test.cpp', 't'),
    ('version', 'vmsearch/vm_choice_test.cpp', 't'),
    ('archive', 'provision/pack_entry_test.cpp', 'n'),
    ('vm_command_line', 'vmlaunch/vm_command_line_test.cpp', 'a:'),
]
SCRIPTS = {
    'vm_choice': [
        'p:ryn.nl.valid.vm.list=JRE 17+\np:ryn.nl.win32.java.launcher.platform=2\n'
        r'v:C:\Java\bin|17.0.9|jdk' '\nr:HKLM\\SOFTWARE\\JavaSoft\\JDK\\17|JavaHome|C:\\Java\n!:x',
        'p:ryn.nl.valid.vm.list=ALL\np:ryn.nl.current.vm=C:\\a\\bin\\java.exe\nv:C:\\a\\bin|8.0.1\ne:PATH|C:\\b;C:\\a\\bin',
        's:build.option=withoutvm\ns:build.jvmspec.applicable=true\ns:build.jvmspec.total.num=1\ns:build.jvmspec.0=0\n'
        'd:0|PATH_HINT:;C:\\J*;\\HKEY_LOCAL_MACHINE\\SOFTWARE\\*;/:\nv:C:\\Java\\bin|21\np:ryn.nl.valid.vm.list=ALL',
        's:build.option=withvm\ns:build.with.vm.search.option=21\n'
        'v:C:\\app\\Windows\\resource\\jre\\bin|21\nf:C:\\app\\jvmspecs\\Verify.jar\ne:RYN_VM|C:/x/java.exe\n!:wac',
    ],
    'vm_command_line': ['g:25\nk:1\ne:C:\\a b\\java.exe\nc:D:\\x.jar\nl:C:\\y.ryn\nm:Main\no:-Dx=1\ns:64m\nv:true\na:b c\\',
                        'g:1\nk:1\ne:C:\\jre.exe\nh:C:\\j\na:x', 'k:2\na:\na:z'],
    'description': ['DESC: a\nJVM_EXE: java\nPLATFORM_HINT:\nWindows\n/:\nPATH_HINT:\nC:\\Java\n/:\n'],
}


def texts(path):
    """The string literals of a C++ file, those next to each other as one."""
    for match in LITERALS.finditer(path.read_text(encoding='utf-8')):
        pieces = re.findall(r'L?("(?:[^"\\\n]|\\.)*")', match.group())
        try:
            text = ''.join(ast.literal_eval(re.sub(r'\\0', r'\\x00', piece)) for piece in pieces)
        except (SyntaxError, ValueError):
            continue
        yield text.encode('utf-16-le', 'surrogatepass').decode('utf-16-le', 'replace').encode()


def main():
    folder = pathlib.Path(sys.argv[1])
    for target, test, front in SOURCES:
        for number, text in enumerate(texts(ROOT / 'tests/unit' / test)):
            (folder / target / f'{pathlib.Path(test).stem}-{number}').write_bytes(front.encode() + text)
    for target, scripts in SCRIPTS.items():
        for number, script in enumerate(scripts):
            (folder / target / f'script-{number}').write_text(script, encoding='utf-8')


if __name__ == '__main__':
    main()
