"""From the raw command line to what a VM's program is given."""
import pytest

from harness import install_vm, windows_path

# Raw text behind the program, arguments that arrive. Backslashes arrive doubled except before a quotation
# mark: the Java side expects them so.
ARGUMENTS = [
    ("  a   b ", ["a", "b"]),
    # No marks are put around what holds no blank: an empty argument is lost.
    ('x "" y', ["x", "y"]),
    ('in"si de"d', ["insi ded"]),
    (r'"C:\My Files\x y"', [r"C:\\My Files\\x y"]),
    ('"C:\\My Files\\" z', ["C:\\\\My Files\\", "z"]),
    ('größe 文字 "é 😀"', ["größe", "文字", "é 😀"]),
    ('"*.none" *.none', ["*.none", "*.none"]),
    ("a=b;c,d %PATH% ^& |", ["a=b;c,d", "%PATH%", "^&", "|"]),
    # What exists becomes an absolute path, unless it looks like a switch.
    ('notes.txt "sub/my notes.txt" NOTES.TXT.no /tmp',
     [r"{folder}\\notes.txt", r"{folder}\\sub\\my notes.txt", "NOTES.TXT.no", "/tmp"]),
    (".", [r"{folder}"]),
]


@pytest.fixture
def argument_app(app):
    (app.folder / "sub").mkdir()
    for name in ("notes.txt", "sub/my notes.txt"):
        (app.folder / name).touch()
    return app


def received(app, **options):
    return app.run(vm=install_vm(app.folder / "vm"), **options).arguments


@pytest.mark.parametrize("raw, expected", ARGUMENTS)
def test_arguments_arrive(argument_app, raw, expected):
    folder = argument_app.windows_folder().replace("\\", "\\\\")
    assert received(argument_app, tail=raw) == [text.replace("{folder}", folder) for text in expected]


def test_arguments_are_relative_to_the_folder_of_the_caller(argument_app):
    folder = argument_app.windows_folder().replace("\\", "\\\\")
    command = windows_path(argument_app.program) + r' ..\notes.txt "notes.txt"'
    assert received(argument_app, command=command, folder=argument_app.folder / "sub") == [
        folder + r"\\notes.txt", "notes.txt"]
