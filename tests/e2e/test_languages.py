"""The texts that the launcher carries, and errors in the language of the user. Wine takes it from the locale's name;
the host need not have the locale."""
import unicodedata

import pytest

from harness import install_vm
from pack_server import serve, without_vm, write_options

RT_DIALOG, RT_STRING = 5, 6
ENGLISH, ARABIC = 1033, 1025
ERROR_TITLE, NO_VALID_VM, VM_START_FAILED = 110, 101, 103
EXTRACTION_ERROR_TITLE, DOWNLOADING_TITLE, DOWNLOADING_TEXT = 112, 114, 115
EAST_ASIA = ("CJK", "IDEOGRAPHIC", "FULLWIDTH", "HIRAGANA", "KATAKANA", "KATAKANA-HIRAGANA", "LEFT", "RIGHT")
# What a language has besides the letters of ASCII, or the scripts that it is written in. What is garbled or in the
# wrong file stands out.
LETTERS = {10: "áéíñóúü", ARABIC: ("ARABIC",), 1027: "àçèéíïòóú·", 1028: EAST_ASIA, 1029: "áčďéěíňóřšťúůýž", 1030: "æøå",
           1031: "äöüß", 1032: ("GREEK",), ENGLISH: "", 1035: "äö", 1036: "àâçèéêîôùû", 1038: "áéíóöőúüű", 1040: "àèéìòù",
           1041: EAST_ASIA, 1042: ("HANGUL",), 1043: "ëï", 1044: "æøå", 1045: "ąćęłńóśźż", 1046: "àáâãçéêíóôõú",
           1049: ("CYRILLIC",), 1051: "áäčďéíĺľňóôŕšťúýž", 1053: "åäö", 1054: ("THAI",), 1055: "çğıİöşü", 1057: "",
           1060: "čšž", 1069: "", 2052: EAST_ASIA, 2070: "àáâãçéêíóôõú", 3084: "àâçèéêîôùû"}


@pytest.fixture(scope="session")
def texts(resources):
    """Language to number to text."""
    found = {}
    for (kind, block, language), data in resources.items():
        if kind != RT_STRING:
            continue
        # Sixteen texts share a resource; each is preceded by its length.
        for number in range(16 * block - 16, 16 * block):
            end = 2 + 2 * int.from_bytes(data[:2], "little")
            if end > 2:
                found.setdefault(language, {})[number] = data[2:end].decode("utf-16-le")
            data = data[end:]
    return found


def test_every_language_is_whole(texts):
    assert set(LETTERS) == set(texts)
    assert len({tuple(of.items()) for of in texts.values()}) == len(texts), "copies"
    for language, of in texts.items():
        assert of.keys() == texts[ENGLISH].keys(), language
        for number, text in of.items():
            english = texts[ENGLISH][number]
            assert len(text) < 256 and text == text.strip() and "  " not in text, (language, text)
            assert (text == english) == (language == ENGLISH), text
            for part in ("%", "%d", "\n", "\n\n", "..."):
                assert text.count(part) == english.count(part), (language, text)
            assert text.count("(") == text.count(")"), (language, text)
            for name in ("Kestrune", "Brivant", "Java", "Windows", "VM", "JVM", "URL"):
                assert name in text or name not in english, (language, text)


def test_texts_are_written_in_the_letters_of_their_language(texts):
    for language, of in texts.items():
        letters = LETTERS[language]
        foreign = [c for text in of.values() for c in text if ord(c) >= 128]
        assert bool(foreign) == bool(letters), language
        for c in foreign:
            known = c.lower() in letters or c in letters if isinstance(letters, str) else unicodedata.name(c).split()[0].startswith(letters)
            assert known, (language, c)
        if not isinstance(letters, str):  # the rest are blanks and the names of products, Latin everywhere
            assert all(6 * sum(ord(c) >= 128 for c in text) >= len(text) for text in of.values()), language


def test_dialog_has_the_direction_of_its_language_and_room_for_its_text(texts, resources):
    # Its extended style; the texts come at run time.
    styles = {language: int.from_bytes(data[8:12], "little") for (kind, _, language), data in resources.items()
              if kind == RT_DIALOG}
    assert styles == {0: 0, ARABIC: 0x402000}
    for language, of in texts.items():
        # The dialog has one line of 174 units for it, a quarter of the average letter each; East Asia's take two.
        columns = sum(0 if unicodedata.combining(c) else 2 if ord(c) >= 0x1100 else 1 for c in of[DOWNLOADING_TEXT])
        assert columns <= 174 // 4, language


@pytest.mark.parametrize("locale, language", [
    ("de_DE", 1031), ("ja_JP", 1041), ("ar_SA", ARABIC), ("zh_CN", 2052),
    # One text for all regions, and one for each of two.
    ("es_MX", 10), ("fr_CA", 3084), ("fr_FR", 1036),
    # None of ours.
    ("is_IS", ENGLISH),
])
def test_no_vm(app, texts, locale, language):
    result = app.run(host_environment={"LC_ALL": f"{locale}.UTF-8"})
    assert result.box.title == texts[language][ERROR_TITLE]
    assert result.box.text == texts[language][NO_VALID_VM] + "\n\nRequired Java VM : ALL"
    assert (result.exit_code, result.records) == (106, [])


def test_error_number_goes_into_the_translated_text(app, texts):
    vm = install_vm(app.folder / "vm", names=["java"])
    result = app.run(vm=vm, host_environment={"LC_ALL": "ja_JP.UTF-8"})
    assert result.box.text == texts[1041][VM_START_FAILED].replace("%d", "2")


def test_progress_dialog_is_never_seen_in_another_language(app, texts):
    with serve() as server:
        server.answers["/jre.vm"] = b"no pack"
        write_options(app, **without_vm(12, "dont__search", server.url + "/jre.vm"))
        result = app.run(handles=False, host_environment={"LC_ALL": "de_DE.UTF-8"})
    assert [box.title for box in result.boxes] == [texts[1031][number] for number in (DOWNLOADING_TITLE, EXTRACTION_ERROR_TITLE, ERROR_TITLE)]
