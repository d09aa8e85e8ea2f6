#!/usr/bin/env python3
"""Checks the string tables of all languages against the English one; the exit status is 1 if there are faults."""
import argparse
import re
import sys
import unicodedata
from collections.abc import Iterator
from pathlib import Path

# Languages that must be present, with the system's titles for "Cancel" there.
# A button with such a title gets the Escape key, which none of ours may have.
CANCEL = {
    "en": {"Cancel"}, "ar": {"إلغاء"}, "bg": {"Отказ", "Откажи", "Отмяна"},
    "ca": {"Cancel·lar", "Cancel·la"}, "cs": {"Zrušit"}, "da": {"Annuller"},
    "de": {"Abbrechen"}, "el": {"Ακύρωση", "Άκυρο"}, "es": {"Cancelar"},
    "es-419": {"Cancelar"}, "et": {"Loobu", "Tühista", "Katkesta"},
    "fa": {"لغو", "انصراف"}, "fi": {"Kumoa", "Peruuta", "Peru"},
    "fr": {"Annuler"}, "he": {"ביטול", "בטל"}, "hi": {"रद्द करें"},
    "hr": {"Poništi", "Odustani", "Otkaži"}, "hu": {"Mégsem", "Mégse"},
    "id": {"Batal", "Batalkan"}, "it": {"Annulla"}, "ja": {"キャンセル"},
    "ko": {"취소"}, "lt": {"Atšaukti", "Atsisakyti"}, "lv": {"Atcelt"},
    "ms": {"Batal", "Batalkan"}, "nb": {"Avbryt"},
    "nl": {"Annuleer", "Annuleren"}, "pl": {"Anuluj"}, "pt-BR": {"Cancelar"},
    "pt-PT": {"Cancelar"}, "ro": {"Anulați", "Anulează", "Anulare"},
    "ru": {"Отменить", "Отмена"}, "sk": {"Zrušiť"}, "sl": {"Prekliči"},
    "sr": {"Откажи", "Одустани"}, "sr-Latn": {"Otkaži", "Odustani"},
    "sv": {"Avbryt"}, "th": {"ยกเลิก"},
    "tr": {"Vazgeç", "İptal"}, "uk": {"Скасувати"}, "vi": {"Hủy", "Huỷ"},
    "zh-Hans": {"取消"}, "zh-Hant": {"取消"},
}

# Texts that may equal the English one.
SAME_AS_ENGLISH = {
    # "Open" is the Dutch imperative too.
    ("nl", "MAC_LAUNCHER_MACAPPSTORE_WARNING_OPEN"),
}

# Buttons that stand side by side in one alert.
BUTTONS = [
    ["MAC_LAUNCHER_INCOMPLETE_WARNING_CONTINUE",
     "MAC_LAUNCHER_INCOMPLETE_WARNING_QUIT"],
    ["MAC_LAUNCHER_FAILED_WARNING_MANUAL_DONWLOAD",
     "MAC_LAUNCHER_FAILED_WARNING_QUIT"],
    ["MAC_LAUNCHER_MACAPPSTORE_WARNING_OPEN",
     "MAC_LAUNCHER_MACAPPSTORE_WARNING_QUIT",
     "MAC_LAUNCHER_MACAPPSTORE_WARNING_MANUAL_DONWLOAD"],
]
ALL_BUTTONS = {key for row in BUTTONS for key in row}

# Commands in the menus of a system with a menu bar.
MENUS = {"MAC_LAUNCHER_MENU_HIDE", "MAC_LAUNCHER_MENU_MINIMIZE",
         "MAC_LAUNCHER_MENU_HELP"}
TITLES = ALL_BUTTONS | MENUS

PRODUCT = "Tolvix"
# An ending or, in Hebrew and Arabic letters, a prefix that is glued to the name; apostrophes and hyphens may stand
# between. Words of a compound are longer than that. Japanese and Korean particles follow any name unchanged.
LETTER = "[a-zà-ÿĀ-ɏͰ-ӿ]"
INFLECTED = re.compile(rf"{PRODUCT}(?:[’']?{LETTER}|-{LETTER}{{1,3}}\b)|[א-ת؀-ۿ]-?{PRODUCT}")
RIGHT_TO_LEFT = {"ar", "fa", "he"}
FILLER = re.compile(r"(?:\s|/\*.*?\*/)*", re.S)
ENTRY = re.compile(r'"((?:[^"\\]|\\.)*)"\s*=\s*"((?:[^"\\]|\\.)*)"\s*;', re.S)
ESCAPES = {'"': '"', "\\": "\\", "n": "\n", "t": "\t"}


class ParseError(Exception):
    """The file is not a string table."""


def unescape(text: str, line: int) -> str:
    """Resolves the escapes of a quoted string."""
    def resolve(match: re.Match) -> str:
        if match[1] not in ESCAPES:
            raise ParseError(f"line {line}: unknown escape {match[0]}")
        return ESCAPES[match[1]]
    return re.sub(r"\\(.)", resolve, text, flags=re.S)


def parse(data: bytes) -> list[tuple[str, str]]:
    """Returns the (key, text) pairs of a table in their order."""
    if data.startswith(b"\xef\xbb\xbf"):
        raise ParseError("starts with a byte order mark")
    try:
        source = data.decode("utf-8")
    except UnicodeDecodeError as error:
        raise ParseError(f"not UTF-8 at byte {error.start}") from None
    pairs = []
    position = FILLER.match(source).end()
    while position < len(source):
        line = source.count("\n", 0, position) + 1
        entry = ENTRY.match(source, position)
        if not entry:
            raise ParseError(f'line {line}: expected "KEY" = "text";')
        pairs.append((unescape(entry[1], line), unescape(entry[2], line)))
        position = FILLER.match(source, entry.end()).end()
    return pairs


def is_control(language: str, character: str) -> bool:
    """Invisible characters; Persian spells words with the non-joiner."""
    if character == "\u200c" and language == "fa":
        return False
    return unicodedata.category(character) in ("Cc", "Cf", "Zl", "Zp")


def text_faults(language: str, key: str, text: str, english: str) -> Iterator[str]:
    """Yields what is wrong with one text on its own."""
    if not text.strip():
        yield "empty"
        return
    if text != text.strip():
        yield "leading or trailing blank"
    if any(is_control(language, character) for character in text):
        yield "control character"
    if text == english and language != "en" and (language, key) not in SAME_AS_ENGLISH:
        yield "copy of the English text"
    if PRODUCT in english and PRODUCT not in text:
        yield f"does not name {PRODUCT}"
    if INFLECTED.search(text):
        yield f"bends the name {PRODUCT}"
    if re.search(r"\bMac", text):
        yield "speaks of a Mac, which not every computer is"
    if re.search(r"\.\.\.| [?!:;…]|  |['\"]", text):
        yield "three dots, a double blank, a breaking one before a mark, or a straight quote"
    if (key in TITLES or key.endswith("_TITLE")) and text.endswith((".", "。", "।")):
        yield "title, button or command ends with a period"
    if key in ALL_BUTTONS and text in CANCEL.get(language, ()):
        yield 'button titled "Cancel"'
    # The first letter decides the direction of the whole line.
    if language in RIGHT_TO_LEFT and text.strip()[0].isascii():
        yield "starts with a Latin letter, so the line would run left to right"


def table_faults(language: str, pairs: list[tuple[str, str]], english: dict[str, str]) -> Iterator[tuple[str, str]]:
    """Yields (key, fault) for one table; english maps keys to texts."""
    table = {}
    for key, text in pairs:
        if key in table:
            yield key, "duplicate"
        elif key not in english:
            yield key, "unknown key"
        else:
            for fault in text_faults(language, key, text, english[key]):
                yield key, fault
        table[key] = text
    for key in sorted((english.keys() | TITLES) - table.keys()):
        yield key, "missing"
    known = [key for key in table if key in english]
    if known != [key for key in english if key in table]:
        yield "-", "keys in another order than in en"
    for row in BUTTONS:
        titles = [table[key] for key in row if key in table]
        if len(set(titles)) < len(titles):
            yield row[0], "two buttons of one alert have the same title"


def check(folder: Path) -> tuple[int, list[str]]:
    """Returns the number of tables in the folder and the list of faults."""
    faults = []
    tables = {}
    found = {path.stem: path / "Localizable.strings" for path in folder.glob("*.lproj")}

    def report(language: str, key: str, fault: object) -> None:
        faults.append(f"{language}.lproj/Localizable.strings: {key}: {fault}")

    for language in sorted(CANCEL.keys() | found.keys()):
        if language not in CANCEL:
            report(language, "-", "unknown language")
            continue
        if language not in found or not found[language].is_file():
            report(language, "-", "no table")
            continue
        try:
            tables[language] = parse(found[language].read_bytes())
        except (OSError, ParseError) as error:
            report(language, "-", error)

    english = dict(tables.get("en", ()))
    twins = {}
    for language, pairs in tables.items():
        if "en" in tables:
            for key, fault in table_faults(language, pairs, english):
                report(language, key, fault)
        twin = twins.setdefault(tuple(pairs), language)
        if twin != language:
            report(language, "-", f"copy of the whole table of {twin}")
    return len(tables), faults


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, allow_abbrev=False)
    parser.add_argument("folder", metavar="FOLDER", type=Path, nargs="?",
                        default=Path(__file__).resolve().parent.parent / "resources",
                        help="holds the <language>.lproj folders (default: the project's resources)")
    options = parser.parse_args()
    sys.stdout.reconfigure(encoding="utf-8")
    count, faults = check(options.folder)
    for fault in faults:
        print(fault)
    print(f"{count} tables, {len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
