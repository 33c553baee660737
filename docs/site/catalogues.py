"""Chinese catalogues of the site's pages and of the manual pages: brings them up to date, and finds faults in them."""
import collections
import pathlib
import re
import shutil
import subprocess

import polib

root = pathlib.Path(__file__).resolve().parents[2]
pageCatalogues = root / "docs/site/locale/zh_CN/LC_MESSAGES"
manualCatalogue = root / "docs/man/po/zh_CN.po"
manualPages = root / "docs/man/zh_CN"
aroundPages = "sphinx.po"  # the texts around the pages; those of the theme and of gqLibPages.py

# Pages with a catalogue. All others are shown in English.
translated = re.compile(r"(README|index|examples/index|tests/golden/README|(guide|formats)/\w+)$")

head = {"Language": "zh_CN", "MIME-Version": "1.0", "Content-Type": "text/plain; charset=utf-8",
        "Content-Transfer-Encoding": "8bit"}


def run(*command):
    subprocess.run(command, cwd=root, check=True, stdout=subprocess.DEVNULL)


def readTexts(folder):
    """Writes the texts of the pages to templates in a folder, as Sphinx finds them, and returns the pages' names."""
    run("scripts/sitePages", folder / "source")
    run("sphinx-build", "-q", "-b", "gettext", "-c", "docs/site", "-d", folder / "doctrees", folder / "source", folder)
    pages = [str(template.relative_to(folder).with_suffix("")) for template in sorted(folder.rglob("*.pot"))]
    return [page for page in pages if translated.match(page)]


def hasNoWords(entry):
    """Returns true for a single code, a number, and in manual pages for dates and the names in lists."""
    kind = entry.comment.removeprefix("type: ")
    if kind in ("Dd", "Dt", "Os", "In"):
        return True
    if kind == "It":
        return re.match(r"(Fl|Cm|Pa|Ev) |\\?-?\d+$", entry.msgid) is not None
    return re.fullmatch(r"`[^`]+`|-?[\d.]+( [nµm]?s)?", entry.msgid) is not None


def withNewNumbers(entry):
    """Returns the translation of a fuzzy entry with the numbers of its text, or None if more than numbers changed."""
    number = re.compile(r"\d+(?:\.\d+)?")
    before = entry.previous_msgid or ""
    old, new = number.findall(before), number.findall(entry.msgid)
    if number.sub("", before) != number.sub("", entry.msgid) or sorted(number.findall(entry.msgstr)) != sorted(old):
        return None
    renamed = dict(zip(old, new))
    if [renamed[text] for text in old] != new:
        return None
    return number.sub(lambda found: renamed[found[0]], entry.msgstr)


def tidy(catalogue):
    """Leaves out of a catalogue what changes without a reason: dates, lines, and texts that no page has."""
    for entry in catalogue.obsolete_entries():
        catalogue.remove(entry)
    for entry in catalogue:
        entry.occurrences = []
        text = entry.msgid if hasNoWords(entry) else withNewNumbers(entry)
        if not entry.translated() and text:
            entry.msgstr = text
            entry.flags = [flag for flag in entry.flags if flag != "fuzzy"]
            entry.previous_msgid = None
    catalogue.wrapwidth = 110
    catalogue.header = ""
    catalogue.metadata = head
    catalogue.metadata_is_fuzzy = False


def updatePages(templates, folder):
    """Merges the templates into the catalogues in a folder. Keeps changed texts as fuzzy entries."""
    pages = readTexts(templates)
    for page in pages:
        template = templates / f"{page}.pot"
        target = folder / f"{page}.po"
        if target.exists():
            run("msgmerge", "--quiet", "--update", "--previous", "--backup=none", target, template)
        else:
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(template, target)
        catalogue = polib.pofile(str(target))
        tidy(catalogue)
        catalogue.save()
    for target in folder.rglob("*.po"):
        if str(target.relative_to(folder).with_suffix("")) not in pages and target.name != aroundPages:
            target.unlink()


def updateManuals(catalogueFolder, pageFolder):
    """Brings the manual pages' catalogue in a folder up to date, and makes the translated pages."""
    run("po4a", "--quiet", "--variable", f"po={catalogueFolder}", "--variable", f"pages={pageFolder}", "docs/man/po4a.cfg")
    (catalogueFolder / "man.pot").unlink()
    target = catalogueFolder / "zh_CN.po"
    catalogue = polib.pofile(str(target))
    tidy(catalogue)
    catalogue.save()


def literals(text):
    """Returns what a translation must keep: codes and the targets of links; in manual pages, the macros' arguments
    without the punctuation that is joined to them."""
    macros = re.findall(r"E<\.(?!Sx|Dq|Pq|Qq|Qo)\w+ ?([^>]*?)(?: Sc)?(?: Ns [^\x00-\x7f][^>]*)?>", text)
    return sorted(re.findall(r"(`+[^`]+`+)", text) + re.findall(r"\]\(([^)\s]+)\)", text) + macros)


def shownMarks(text):
    """Returns the bold texts that end in punctuation and precede a letter: Markdown shows their ** as it is."""
    return [bold for bold, after in re.findall(r"\*\*(.+?)\*\*(\w?)", text) if after and re.search(r"\W$", bold)]


def lostNumbers(entry):
    """Returns the numbers of a text that its translation lacks. It may have more: Chinese writes 'one' as a digit."""
    before, after = (collections.Counter(re.findall(r"\d+(?:\.\d+)*", text)) for text in (entry.msgid, entry.msgstr))
    return sorted((before - after).elements())


def entryFaults(name, catalogue):
    """Returns a line for each entry of a catalogue that is not a complete translation."""
    faults = []
    for entry in catalogue:
        if entry.obsolete:
            problem = "is obsolete"
        elif entry.fuzzy:
            problem = "is fuzzy, must be compared with the English text"
        elif not entry.msgstr:
            problem = "must be translated"
        elif literals(entry.msgid) != literals(entry.msgstr):
            problem = f"must keep codes and links: found {literals(entry.msgstr)}, expected {literals(entry.msgid)}"
        elif shownMarks(entry.msgstr):
            problem = f"must have a blank after the second ** of {shownMarks(entry.msgstr)}"
        elif lostNumbers(entry):
            problem = f"must keep numbers: lost {', '.join(lostNumbers(entry))}"
        else:
            continue
        faults.append(f"{name}: '{entry.msgid}' {problem}")
    return faults


def differences(name, kept, updated):
    """Returns a line for each text that only one of two states of a catalogue has."""
    had = {entry.msgid for entry in kept if not entry.obsolete}
    has = {entry.msgid for entry in updated}
    return ([f"{name}: '{text}' is missing" for text in sorted(has - had)]
            + [f"{name}: '{text}' is not on the page" for text in sorted(had - has)])


def compareFolders(kept, updated):
    """Returns a line for each fault in the catalogues of a folder, compared with their state after an update."""
    faults = []
    for path in sorted({path.relative_to(folder) for folder in (kept, updated) for path in folder.rglob("*.po")}):
        if not (kept / path).exists() or not (updated / path).exists():
            faults.append(f"{path}: " + ("no page" if (kept / path).exists() else "no such catalogue"))
            continue
        old = polib.pofile(str(kept / path))
        found = differences(path, old, polib.pofile(str(updated / path))) + entryFaults(path, old)
        if not found and (kept / path).read_bytes() != (updated / path).read_bytes():
            found = [f"{path}: must be as scripts/translate writes it"]
        faults += found
    return faults
