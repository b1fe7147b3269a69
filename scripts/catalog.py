#!/usr/bin/env python3
"""Writes the template of all texts that people read, from the sources: data/translations/vellumcraft.pot.

    scripts/catalog.py            writes it anew and merges it into the languages' .po files (msgmerge)
    scripts/catalog.py --check    says whether it is what the sources say; 1 where it isn't
    scripts/catalog.py --pseudo OUT.po    a language of accents and brackets, 40 % longer, for tests

A text is marked by the function that shows it (tr, translated, shown, inside_sentence), or it stands in a row:
the rows of the string table and of the checks, and those of the files in ROWS, of which each literal that reads
as prose is taken.
"""
import argparse
import pathlib
import re
import subprocess
import sys

HOUSE = pathlib.Path(__file__).resolve().parent.parent
END_OF_CONTEXT = "\4"  # as compiled catalogs have it
FOLDER = HOUSE / "data/translations"
TEMPLATE = FOLDER / "vellumcraft.pot"

# Files whose rows people read; a "!" takes files out again.
ROWS = [
    "src/operations/*", "src/generators/*", "src/exchange/*", "src/batch/batch_row.cpp", "src/batch/gallery_fields.cpp",
    "src/batch/batch_names.cpp", "src/core/chunks/chunk_f*", "src/core/chunks/chunk_reading*",
    "src/core/chunks/chunk_tip.cpp", "src/core/edit/new_document_fields.cpp", "src/core/model/chunk_description.cpp",
    "src/core/check/check_*", "src/core/files/open_document.cpp", "src/core/model/kind_table.cpp",
    "src/core/files/save_document.cpp", "src/image/graphic_file.cpp", "src/image/palette_file.cpp",
    "src/base/limits.cpp", "src/image/png_decode.cpp", "src/core/files/first_picture.cpp",
    "src/shell/*/*", "src/shell/main.cpp", "src/cli/*",
    "!*/settings.h", "!src/exchange/swf_*", "!src/exchange/html_*", "!src/operations/tile_groups.cpp",
    "!src/cli/completion*", "!src/cli/man_text*", "!src/cli/batch_report*", "!src/cli/document_json*",
    "!src/shell/services/paint_programs.cpp", "!src/shell/services/shared_recent.cpp",
    "!src/shell/forms/default_folders.cpp", "!src/shell/forms/dialog_state.cpp", "!src/shell/help/page_style.cpp",
    "!src/generators/glyph*",
]

# Rows of small words, which nothing else tells from names of values.
SMALL_WORDS = {
    "src/base/safe_file.cpp": "open|create|write|rename|set the permissions of",
    "src/core/files/open_document.cpp": "a PNG|an MNG|a WebP|a JNG|a GIF|a JPEG|a BMP|a PCX|an ANI|an AVI",
    "src/core/chunks/chunk_reading_color.cpp": "display|abstract|linear|unspecified|unknown|narrow|full",
    "src/core/chunks/chunk_reading_png.cpp": "linear|pixel|micrometer|meter|radian|unknown",
    "src/core/chunks/chunk_reading_mng.cpp": "absolute|relative|over|replace|none",
    "src/core/chunks/chunk_facts_text.cpp": "upright|mirrored|flipped",
    "src/core/check/check_mng.cpp": "frames|layers|ticks",
    "src/core/check/check_webp.cpp": "alpha|animation",
    "src/operations/animation_properties.h": "green|yellow|red",
    "src/image/quantize.h": "Quantizing",
    "src/core/check/finding.cpp": "error|warning|note",
    "src/cli/check.cpp": "error|errors|warning|warnings|note|notes",
}

# Rows of the string table that name files.
FILE_NAMES = re.compile(r"_$|\.png$|^PALETTE\w*$|%lu|^Backup of|^untitled$")

# Texts that mean another thing in one place: the second argument of tr, the name of the field.
IN_CONTEXT = {("frame", "Frame"): "src/operations/still.cpp", ("effect", "Type"): "src/generators/led_sign.cpp",
              ("of an animation", "Frame"): "src/shell/dialogs/manage_model.cpp",
              ("rows of a list", "Check"): "src/shell/dialogs/manage_dialog.cpp"}

# What Qt says in our windows, whose own catalogs need not be installed, and CLI11 in helps.
OF_LIBRARIES = """Print this help message and exit|Display program version information and exit|OPTIONS|SUBCOMMAND|REQUIRED|
OK|&OK|Open|Save|&Save|Cancel|&Cancel|Close|&Close|Apply|Reset|Help|Discard|Don't Save|Close without Saving|
&Yes|Yes to &All|&No|N&o to All|Abort|Retry|Ignore|Restore Defaults|Scroll Left|Scroll Right|Stay on &Top|Mi&nimize|Ma&ximize|&Size|&Move|&Restore|Close Tab|
Save All|&Undo|&Redo|Cu&t|&Copy|&Paste|Delete|
Select All|Copy &Link Location|&Step up|Step &down|< &Back|&Next >|&Next|&Finish|Commit|Done|Go Back|Look in:|File &name:|
Directory:|Files of type:|Back|Forward|Parent Directory|Create New Folder|List View|Detail View|&Open|&Choose|&Rename|
&Delete|Show &hidden files|&New Folder|Find Directory|Directories|All Files (*)|Save As|Sidebar|Name|Size|Kind|Type|
Date Modified|File|Folder|New Folder|My Computer|Computer|Print|Show Details...|Hide Details...|
%1 bytes|%1 KiB|%1 MiB|%1 GiB|%1 already exists.
Do you want to replace it?|Recent Places|Remove|Float|Closes the dock widget|
Undocks and re-attaches the dock widget|Scroll here|Top|Bottom|Left edge|Right edge|Page up|Page down|Page left|Page right|
Scroll up|Scroll down|Scroll left|Scroll right"""

MARKS = re.compile(r"\b(?:tr|translated|shown|inside_sentence)\(\s*$")
LITERAL = re.compile(r'"(?:[^"\\\n]|\\.)*"(?:\s*"(?:[^"\\\n]|\\.)*")*')
PART = re.compile(r'"((?:[^"\\\n]|\\.)*)"')
PLACEHOLDER = re.compile(r"%(?:\d\d?\b|[-+ 0#]*[\d*]*(?:\.[\d*]+)?(?:ll|l|z|h)?[diouxXeEfgGcs%])")
# Names of settings and objects, files, keys, markup, addresses, forms of values.
NO_PROSE = re.compile(
    r"^[A-Za-z]+[a-z0-9][A-Z]\w*$|\.(txt|html?|bmp|png|svg|md|dll|ini)\b|_$|[<>{}]|://|^(Alt|Ctrl|Shift|F\d)\b|"
    r"^(Home|End|PgUp|PgDown|Backspace|Up|Down)$|\\x|\\0|^THEME_|sans-serif|^Arial|^Sans$|^[A-Z\[\]@]+$|"
    r"^(Exif|XMP|VP8|RGB|seq|fmt|AVI) $|^Tarnwick$|^(Krita|GIMP|Pinta|KolourPaint|Vellumcraft|Qt)$|^Key=|"
    r"^MemAvailable:|^Source ANI|^Hot spot X: |^(Sequence|Rate): $|^px;|^the build gives|^No $|^GIMP Palette|^ colour palette$|"
    r"""^[-\w]+: (url|none)|^(\\")? (width|height|alt)=|^%s: %s|^vellum: (%s|%\.\*s)|^\s*--|COMPREPLY|Commit\b.*\(""")


def blanked(source):
    """Without comments and includes, at the same places."""
    def white(match):
        return re.sub(r"[^\n]", " ", match.group(0))
    source = source.replace("'\"'", "' '")
    kept = re.compile(r'"(?:[^"\\\n]|\\.)*"|//[^\n]*|/\*.*?\*/|^[ \t]*#[ \t]*include[^\n]*', re.S | re.M)
    return kept.sub(lambda m: m.group(0) if m.group(0).startswith('"') else white(m), source)


def text_of(literal):
    text = "".join(PART.findall(literal))
    return re.sub(r"\\u([0-9A-Fa-f]{4})", lambda m: chr(int(m.group(1), 16)), text)


def words_of(text):
    return PLACEHOLDER.sub("", re.sub(r"\\[nrt]", " ", text))


def is_prose(text, path):
    if path.endswith("chunk_description.cpp") and re.fullmatch("[A-Z ]{3,}", text):
        return True
    if not re.search("[A-Za-z]{2}", words_of(text)) or NO_PROSE.search(text):
        return False
    return bool(re.match("[&(]*[A-Z][a-z&]", text) or (" " in text.strip() and re.search("[a-z]{2}", text)))


def is_row_file(path):
    path = pathlib.PurePath(path)
    taken = any(path.match(pattern) for pattern in ROWS if not pattern.startswith("!"))
    return taken and not any(path.match(pattern[1:]) for pattern in ROWS if pattern.startswith("!"))


def texts_of(file):
    path = file.relative_to(HOUSE).as_posix()
    source = blanked(file.read_text(encoding="utf-8"))
    rows, small = is_row_file(path), SMALL_WORDS.get(path, "").split("|")
    table = path in ("src/base/strings.inc", "src/core/check/check_rules.inc")
    for match in LITERAL.finditer(source):
        text = text_of(match.group(0))
        before = source[max(0, match.start() - 60):match.start()]
        marked = MARKS.search(before) is not None
        if re.search(r'\btr\(\s*"[^"]*",\s*$', before):
            continue
        named = re.search(r"setObjectName\(|QStringLiteral\(\s*$|QLatin1String\(\s*$", before.split("\n")[-1])
        if table and FILE_NAMES.search(text):
            continue
        if text and (marked or table or text in small or (rows and not named and is_prose(text, path))):
            yield text, path


def all_texts():
    found = {}
    files = sorted(f for kind in ("cpp", "h", "inc") for f in (HOUSE / "src").rglob(f"*.{kind}"))
    for file in files:
        for text, path in texts_of(file):
            paths = found.setdefault(text, [])
            if path not in paths:
                paths.append(path)
    for tip in (HOUSE / "data/start/tips.md").read_text(encoding="utf-8").split("\n\n"):
        if not tip.startswith("#"):
            found.setdefault(" ".join(tip.split()).replace('"', '\\"'), []).append("data/start/tips.md")
    for text in OF_LIBRARIES.replace("|\n", "|").split("|"):
        found.setdefault(text.replace("\n", "\\n"), []).append("Qt, CLI11")
    for (context, text), path in IN_CONTEXT.items():
        found[context + END_OF_CONTEXT + text] = [path]
    return found


def quoted(keyword, text):
    context, end, rest = text.partition(END_OF_CONTEXT)
    if end:
        return f'msgctxt "{context}"\n' + quoted(keyword, rest)
    lines = re.findall(r".*?\\n|.+$", text)
    if len(lines) < 2:
        return f'{keyword} "{text}"\n'
    return f'{keyword} ""\n' + "".join(f'"{line}"\n' for line in lines)


def flags_of(text):
    # A blank behind a percent sign is prose: "100 % of".
    forms = [m.group(0) for m in PLACEHOLDER.finditer(text) if m.group(0) != "%%" and not m.group(0).startswith("% ")]
    if any(form[1:].isdigit() for form in forms):
        return "#, qt-format\n"
    return "#, c-format\n" if forms else ""


HEAD = '''# Texts of Vellumcraft.
msgid ""
msgstr ""
"Project-Id-Version: vellumcraft\\n"
"Language: {language}\\n"
"MIME-Version: 1.0\\n"
"Content-Type: text/plain; charset=UTF-8\\n"
"Content-Transfer-Encoding: 8bit\\n"
'''


def template(texts):
    out = HEAD.format(language="")
    for text, paths in texts.items():
        out += "\n" + "".join(f"#: {path}\n" for path in paths) + flags_of(text) + quoted("msgid", text) + 'msgstr ""\n'
    return out


ACCENTS = str.maketrans("aceinouyACEINOUYszSZ", "áçéíñöúýÁÇÉÍÑÖÚÝšžŠŽ")
KEPT = re.compile(PLACEHOLDER.pattern + r"|&&|&.|\\[nrt\"\\]|<[^>]*>|\(\*[^)]*\)")


def pseudo(text):
    body, tab, keys = text.partition("\\t")
    if re.search(r"[^+A-Za-z0-9 ()]", keys):  # a line of columns, and no key behind a label
        body, tab, keys = text, "", ""
    out, at = "", 0
    for match in KEPT.finditer(body):
        out += body[at:match.start()].translate(ACCENTS) + match.group(0)
        at = match.end()
    out += body[at:].translate(ACCENTS)
    longer = -(-len(words_of(body)) * 2 // 5)
    tail = "".join(" " if i % 7 == 6 else "ẋ" for i in range(longer)).rstrip()
    start = re.match(r"(?:\\[nrt])*", out).end()
    end = re.search(r"(?:\\[nrt])*$", out).start()
    return out[:start] + "⟦" + out[start:end] + tail + "⟧" + out[end:] + tab + keys


def write_pseudo(texts, file):
    out = HEAD.format(language="xx") + '"X-Language-Name: Pseudo\\n"\n'
    for text in texts:
        out += "\n" + flags_of(text) + quoted("msgid", text) + quoted("msgstr", pseudo(text.split(END_OF_CONTEXT)[-1]))
    pathlib.Path(file).write_text(out, encoding="utf-8")


def check(text):
    old = TEMPLATE.read_text(encoding="utf-8") if TEMPLATE.exists() else ""
    if old == text:
        return 0
    before, now = set(re.findall(r'^msgid .*(?:\n".*)*', old, re.M)), set(re.findall(r'^msgid .*(?:\n".*)*', text, re.M))
    for sign, entries in (("+", now - before), ("-", before - now)):
        for entry in sorted(entries)[:20]:
            print(sign, entry)
    print("data/translations/vellumcraft.pot is not what the sources say: run scripts/catalog.py")
    return 1


def main():
    options = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    options.add_argument("--check", action="store_true")
    options.add_argument("--pseudo", metavar="OUT.po")
    given = options.parse_args()
    texts = all_texts()
    if given.pseudo:
        return write_pseudo(texts, given.pseudo)
    if given.check:
        return check(template(texts))
    FOLDER.mkdir(exist_ok=True)
    TEMPLATE.write_text(template(texts), encoding="utf-8")
    for language in sorted(FOLDER.glob("*.po")):
        subprocess.run(["msgmerge", "--quiet", "--no-wrap", "--no-fuzzy-matching", "--backup=none", "--update",
                        language, TEMPLATE], check=True)
    return 0


if __name__ == "__main__":
    sys.exit(main())
