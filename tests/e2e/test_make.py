"""Applications of `ryn make`: the launcher that it brands, signed as well, and the folder around it."""
import json
import shutil
import subprocess

import pefile
import pytest

from harness import BUILD, App, install_vm, ryn, windows_path
# Some of the launcher's own tests, which a branded one has to pass, and what they need.
from test_arguments import argument_app, test_arguments_are_relative_to_the_folder_of_the_caller  # noqa: F401
from test_console import test_control_key_opens_a_console_and_holds_it  # noqa: F401
from test_image import test_hardening  # noqa: F401
from test_languages import NO_VALID_VM, texts  # noqa: F401
from test_launch import test_microsoft_command_line, test_modern_command_line  # noqa: F401
from test_packs import PROGRESS, boxes_of, dpi, hold, test_build_that_fetches_its_vm, vm_pack, web  # noqa: F401

GERMAN, JAPANESE, ENGLISH = 1031, 1041, 1033
# What comes of a check that finds the class path empty.
NO_JAR = 1
NO_JAVA = "Bitte Java 17 installieren:\nhttps://example.com/größe"


@pytest.fixture(scope="session")
def branded(tmp_path_factory):
    """The program of an application with a title, an icon and a German text of its own."""
    folder = tmp_path_factory.mktemp("branded")
    (folder / "texts").mkdir()
    (folder / "texts" / "de.txt").write_text(NO_JAVA, encoding="utf-8")
    subprocess.run(["convert", "-size", "48x48", "xc:red", "-size", "16x16", "xc:blue", folder / "app.ico"], check=True)
    ryn("make", "--name", "Größe", "--out", folder / "app", "--title", "Größe 文", "--icon", folder / "app.ico",
        "--main", "Main", "--no-vm-text", folder / "texts", "--version", "2.4.0.17", code=NO_JAR)
    return folder / "app" / "Größe.exe"


@pytest.fixture
def make_app(make_app, branded):
    """As everywhere, around the branded launcher."""
    def make(*arguments, **options):
        app = make_app(*arguments, **options)
        shutil.copyfile(branded, app.program)
        return app
    return make


@pytest.fixture(scope="session")
def image(branded):
    return pefile.PE(branded)


def test_the_icon_is_the_one_given(branded):
    """That of the download's window, which is the only one and so Explorer's."""
    found = subprocess.run(["wrestool", "--extract", "--type=group_icon", branded], capture_output=True, check=True)
    # It fills up behind the last picture.
    assert found.stdout.startswith((branded.parents[1] / "app.ico").read_bytes())


@pytest.mark.parametrize("locale, language", [("de_DE", GERMAN), ("ja_JP", JAPANESE), ("is_IS", ENGLISH)])
def test_boxes_in_the_language_of_the_user(app, texts, locale, language):
    environment = {"LC_ALL": f"{locale}.UTF-8"}
    result = app.run(host_environment=environment)
    told = NO_JAVA if language == GERMAN else texts[language][NO_VALID_VM]
    assert (result.box.title, result.box.text) == ("Größe 文", told + "\n\nRequired Java VM : ALL")
    assert result.exit_code == 106
    app.ryn.unlink()
    result = app.run(host_environment=environment)
    assert result.box.title == "Größe 文" and "Größe" in result.box.text


def test_a_signed_program_runs_and_is_not_branded_again(app, branded, tmp_path):
    key, certificate, signed = (tmp_path / name for name in ("key.pem", "certificate.pem", "signed.exe"))
    subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=Maker", "-keyout", key,
                    "-out", certificate, "-addext", "extendedKeyUsage=codeSigning"], check=True, capture_output=True)
    subprocess.run(["osslsigncode", "sign", "-h", "sha256", "-certs", certificate, "-key", key, "-in", branded, "-out",
                    signed], check=True, capture_output=True)
    verified = subprocess.run(["osslsigncode", "verify", "-CAfile", certificate, "-in", signed], capture_output=True, text=True)
    assert verified.returncode == 0 and "Signature verification: ok" in verified.stdout, verified.stdout
    shutil.copyfile(signed, app.program)
    assert app.run(vm=install_vm(app.folder / "vm"), env={"STAND_IN_EXIT": "7"}).exit_code == 7
    for signature in "valid", "invalid":
        explained = subprocess.run(app.host.command(BUILD / "ryn" / "ryn.exe", "explain", app.program, "--json"),
                                   env=app.host.environment, capture_output=True)
        assert json.loads(explained.stdout)["application"]["launcher"]["signature"] == signature
        app.program.write_bytes(app.program.read_bytes().replace(b"DOS mode", b"DOS Mode", 1))
    assert "it is signed" in ryn("make", "--name", "a", "--out", tmp_path / "a", "--main", "a", "--launcher", signed, code=2)


def test_a_pack_is_fetched_once(host, web, tmp_path):
    home = install_vm(tmp_path / "jre").parents[1]
    report = json.loads(ryn("pack", "build", home, "--out", tmp_path / "jre.vm", "--json"))
    web.answers["/jre.vm"] = (tmp_path / "jre.vm").read_bytes()
    ryn("make", "--name", "Fetch", "--out", tmp_path / "app", "--main", "Main", "--no-start",
        "--pack", f"{web.url}/jre.vm", "--digest", report["md5"], code=NO_JAR)
    app = App(host, tmp_path / "app", "Fetch")
    assert [boxes_of(app.run(env={"STAND_IN_EXIT": "7"})), web.answers.clear(), boxes_of(app.run())] == [[PROGRESS], None, []]


def test_the_same_folder_is_made_on_windows(host, tmp_path):
    files = []
    for system in "native", "windows":
        out = tmp_path / system / "Größe"
        arguments = ["make", "--name", "Größe", "--main", "a.Main", "--version", "1.2", "--vendors", "--out"]
        if system == "native":
            ryn(*arguments, out, code=NO_JAR)
        else:
            out.parent.mkdir()
            assert host.wine(BUILD / "ryn" / "ryn.exe", *arguments, windows_path(out), check=False) == NO_JAR
        files.append({path.relative_to(out): path.read_bytes() for path in out.rglob("*") if path.is_file()})
    assert files[0] == files[1] and len(files[0]) == 5
