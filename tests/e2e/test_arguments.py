"""From the raw command line to what a VM's program is given."""
import pytest

from harness import install_vm, windows_path

# Raw text behind the program, arguments that arrive. Backslashes arrive doubled except before a quotation
# mark: the Java side expects them so.
ARGUMENTS = [
    ("", []),
    ("  a   b ", ["a", "b"]),
    ('"a b" c', ["a b", "c"]),
    # Split at blanks and joined again with one.
    ('"a    b"', ["a b"]),
    ('"open to the end', ["open to the end"]),
    # No marks are put around what holds no blank: an empty argument is lost.
    ('x "" y', ["x", "y"]),
    ('in"si de"d', ["insi ded"]),
    ('"a" "b"', ["a", "b"]),
    (r"C:\none\file C:\none" + "\\", [r"C:\\none\\file", r"C:\\none" + "\\\\"]),
    (r'"C:\My Files\x y"', [r"C:\\My Files\\x y"]),
    ('"C:\\My Files\\" z', ["C:\\\\My Files\\", "z"]),
    ('größe 文字 "é 😀"', ["größe", "文字", "é 😀"]),
    ('"*.none" *.none', ["*.none", "*.none"]),
    ("a=b;c,d %PATH% ^& |", ["a=b;c,d", "%PATH%", "^&", "|"]),
    ("-i", ["-i"]),
    ("x -tempdir", ["x", "-tempdir"]),
    ("x -tqrynservice", ["x"]),
    ("silent x SILENT", ["silent", "x", "SILENT"]),
    # What exists becomes an absolute path, unless it looks like a switch.
    ('notes.txt "sub/my notes.txt" NOTES.TXT.no /notes.txt',
     [r"{folder}\\notes.txt", r"{folder}\\sub\\my notes.txt", "NOTES.TXT.no", "/notes.txt"]),
    (".", [r"{folder}"]),
]


@pytest.fixture
def argument_app(app):
    (app.folder / "sub").mkdir()
    for name in ("notes.txt", "sub/my notes.txt"):
        (app.folder / name).touch()
    return app


def received(app, **options):
    arguments = app.run(vm=install_vm(app.folder / "vm"), **options).record["arguments"]
    return arguments[arguments.index("Main") + 3:]


@pytest.mark.parametrize("raw, expected", ARGUMENTS)
def test_arguments_arrive(argument_app, raw, expected):
    folder = argument_app.windows_folder().replace("\\", "\\\\")
    assert received(argument_app, tail=raw) == [text.replace("{folder}", folder) for text in expected]


def test_program_without_quotes(argument_app):
    program = windows_path(argument_app.program)
    assert received(argument_app, command=f"{program} a \"b c\"") == ["a", "b c"]


def test_arguments_are_relative_to_the_folder_of_the_caller(argument_app):
    sub = argument_app.folder / "sub"
    folder = argument_app.windows_folder().replace("\\", "\\\\")
    assert received(argument_app, tail=r"..\notes.txt notes.txt", folder=sub) == [folder + r"\\notes.txt", "notes.txt"]
