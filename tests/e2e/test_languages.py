"""Errors in the language of the user. Wine takes it from the locale's name; the host need not have the locale."""
import re

import pytest

from harness import REPOSITORY, install_vm


def text(language, name):
    """A text of the launcher as its source has it."""
    source = (REPOSITORY / "resources" / "strings" / f"{language}.rc").read_text("utf-8")
    return re.search(rf'^#define TEXT_{name} "(.*)"$', source, re.MULTILINE)[1].replace(r"\n", "\n")


@pytest.mark.parametrize("locale, language", [
    ("de_DE", 1031), ("ja_JP", 1041), ("ar_SA", 1025), ("zh_CN", 2052), ("pt_BR", 1046),
    # One text for all regions, and one for each of two.
    ("es_MX", 10), ("fr_CA", 3084), ("fr_FR", 1036),
    # None of ours.
    ("is_IS", 1033),
])
def test_no_vm(app, locale, language):
    result = app.run(host_environment={"LC_ALL": f"{locale}.UTF-8"})
    assert result.box.title == text(language, "ERROR_TITLE")
    assert result.box.text == text(language, "NO_VALID_VM") + "\n\nRequired Java VM : ALL"
    assert (result.exit_code, result.records) == (106, [])


def test_error_number_goes_into_the_translated_text(app):
    vm = install_vm(app.folder / "vm", names=["java"])
    result = app.run(vm=vm, host_environment={"LC_ALL": "ja_JP.UTF-8"})
    assert result.box.text == text(1041, "VM_START_FAILED").replace("%d", "2")
