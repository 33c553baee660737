"""Sphinx extension for the project's pages: links between files become links between pages, listings link to their
programs, names of the library to their declarations, and both back."""
import html
import json
import os
import pathlib
import re
import shutil

from docutils import nodes
from sphinx import addnodes
from sphinx.locale import _
from sphinx.transforms import SphinxTransform
from sphinx.writers.html5 import HTML5Translator

from declarations import Declarations, Program

root = pathlib.Path(__file__).resolve().parents[2]


class RepositoryLinks(SphinxTransform):
    """Makes links between files of the repository point to their pages. A file without a page can be downloaded; a
    folder becomes text."""

    default_priority = 200

    def apply(self, **kwargs):
        pages = self.app.gqLibPages
        files = {page: file for file, page in pages.items()}
        here = files.get(self.env.docname)
        if here is None or here == "examples" or not here.endswith(".md"):
            return  # its links name pages
        links = [*self.document.findall(addnodes.pending_xref), *self.document.findall(addnodes.download_reference)]
        for link in links:
            if link["reftype"] != "myst" or link["reftarget"].startswith("#"):
                continue
            path, mark, anchor = link["reftarget"].partition("#")
            file = os.path.normpath(os.path.join(os.path.dirname(here), path))
            if file == "README.zh-CN.md":
                inner = nodes.reference("", "", internal=True, refuri=otherLanguage(self.app, self.env.docname, "README"))
            elif file in pages:
                target = os.path.relpath(pages[file], os.path.dirname(self.env.docname)) + ".md"
                inner = addnodes.pending_xref("", refdoc=self.env.docname, reftype="myst", refdomain=None, refwarn=True,
                                              refexplicit=True, reftarget=target + mark + anchor)
            elif (root / file).is_file():
                copy = pathlib.Path(self.app.srcdir, "files", file)
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copyfile(root / file, copy)
                inner = addnodes.download_reference("", refdoc=self.env.docname, reftype="myst", refdomain=None,
                                                    reftarget=f"/files/{file}", refexplicit=True, refwarn=False)
            elif (root / file).is_dir():
                inner = nodes.inline()
            else:
                continue  # Sphinx reports it
            inner.source, inner.line = link.source, link.line
            inner.extend(link.children)
            link.replace_self(inner)


class SearchWords(SphinxTransform):
    """Makes search find the words of the comments '<!-- search: TERM, TERM -->'. Runs before Sphinx translates."""

    default_priority = 10

    def apply(self, **kwargs):
        for comment in list(self.document.findall(nodes.raw)):
            words = re.match(r"<!-- search: (.*) -->$", comment.astext().strip(), re.S)
            if words:
                meta = nodes.meta("", name="keywords", content=", ".join(re.findall(r"\w+", words[1])))
                meta["terms"] = re.split(r",\s*", words[1])
                comment.replace_self(meta)


class SearchTerms(SphinxTransform):
    """Puts the terms of the comments into the index, which search ranks above the texts. Runs after the translation."""

    default_priority = 25

    def apply(self, **kwargs):
        for meta in list(self.document.findall(nodes.meta)):
            terms = meta.attributes.pop("terms", [])
            if self.config.language != "en":
                terms = [*terms, *re.split(r"\s*[,，、]\s*", meta["content"])]
            entries = [("single", term, "", "", None) for term in dict.fromkeys(terms) if term]
            meta.parent.insert(meta.parent.index(meta), addnodes.index(entries=entries))


class Listings(SphinxTransform):
    """Puts the name of its program under each listing, as a link."""

    default_priority = 210

    def apply(self, **kwargs):
        for comment in list(self.document.findall(nodes.raw)):
            listing = re.match(r"<!-- listing: (\S+)(?: \S+)? -->$", comment.astext().strip())
            if not listing:
                continue
            file = listing[1]
            block = comment.next_node(nodes.literal_block, siblings=True, ascend=False)
            block["program"] = file
            page = self.app.gqLibPages.get(file)
            if page and page != self.env.docname:
                target = os.path.relpath(page, os.path.dirname(self.env.docname)) + ".md"
                link = addnodes.pending_xref("", refdoc=self.env.docname, reftype="myst", refdomain=None, refwarn=True,
                                             refexplicit=True, reftarget=target)
                link += nodes.inline(file, file)
                place = block.parent.index(block) + 1
                block.parent.insert(place, nodes.paragraph("", "", link, classes=["listing-source"]))
            comment.parent.remove(comment)


class DeclarationPages(SphinxTransform):
    """Joins consecutive declarations with the same documentation, as a comment in a header documents several. Puts
    operations into the contents of their page."""

    default_priority = 220

    def apply(self, **kwargs):
        for rubric in list(self.document.findall(nodes.rubric)):
            rubric["ids"] = []  # the same title occurs in several classes
            if rubric.astext() == "Unnamed Group":
                rubric.parent.remove(rubric)
        for description in list(self.document.findall(addnodes.desc)):
            siblings = description.parent
            place = siblings.index(description)
            between = []
            while place > 0 and isinstance(siblings[place - 1], (nodes.target, addnodes.index)):
                place -= 1
                between.append(siblings[place])
            previous = siblings[place - 1] if place > 0 else None
            text = description[-1].astext()
            if not text or not isinstance(previous, addnodes.desc) or previous[-1].astext() != text:
                continue
            for signature in description[:-1]:
                description.remove(signature)
                previous.insert(len(previous) - 1, signature)
            siblings.remove(description)
            for node in between:
                siblings.remove(node)
                siblings.insert(siblings.index(previous), node)
        for description in self.document.findall(addnodes.desc):
            if description.get("objtype") == "function":
                self.addContents(description)

    def addContents(self, description):
        listed = set()
        for signature in description[:-1]:
            name = signature.next_node(addnodes.desc_name).astext()
            if name not in listed:
                signature["_toc_name"] = name
                signature["_toc_parts"] = (name,)
                listed.add(name)


def linkTo(app, page, refid, contents):
    """Returns a link from a page to a declaration, or the contents alone if it has no page."""
    place = app.env.get_domain("std").anonlabels.get(refid)
    if place is None:
        return contents
    uri = app.builder.get_relative_uri(page, place[0]) + "#" + place[1]
    return nodes.reference("", "", contents, internal=True, refuri=uri, classes=["declaration"])


def namesIn(app, page, document):
    """Returns (literal, refid) for each name of the library in the text of a page, and the refids in its listings."""
    declared = app.gqLibDeclarations
    found = []
    for literal in document.findall(nodes.literal):
        if not any(isinstance(parent, (nodes.reference, addnodes.desc, nodes.title)) for parent in parents(literal)):
            refid = declared.find(literal.astext(), scopes(literal))
            if refid:
                found.append((literal, refid))
    listed = set()
    for block in document.findall(nodes.literal_block):
        if block.get("language") == "cpp":
            listed |= {refid for _, _, refid in programOf(app, block).names(block.rawsource)}
    return found, listed


def parents(node):
    while node.parent is not None:
        node = node.parent
        yield node


def scopes(literal):
    """Yields (text, decides): the texts around a literal, from its paragraph to the page, and the page's first
    paragraph. If a text that decides names several classes, the wider ones do not matter."""
    for parent in parents(literal):
        if isinstance(parent, (nodes.paragraph, nodes.row, nodes.section, nodes.document)):
            yield parent.astext(), isinstance(parent, (nodes.paragraph, nodes.row))
    first = parent.next_node(nodes.paragraph)
    yield first.astext() if first else "", True


def programOf(app, block):
    file = block.get("program")
    text = (root / file).read_text(encoding="utf-8") if file else block.rawsource
    return Program(text, app.gqLibDeclarations)


def collectUses(app, env):
    """Notes for each declaration which pages name it, and for each program which pages show it."""
    for refid, header in app.gqLibDeclarations.headers.items():  # a comment names a header
        env.get_domain("std").anonlabels[refid] = (app.gqLibPages.get(header, "index"), "")
    app.gqLibUses = {}
    for page in sorted(env.found_docs):
        document = env.get_doctree(page)
        names, listed = namesIn(app, page, document)
        for refid in listed | {refid for _, refid in names}:
            app.gqLibUses.setdefault(refid, []).append(page)
        for block in document.findall(nodes.literal_block):
            if block.get("program"):
                shown = app.gqLibUses.setdefault(block["program"], [])
                if page not in shown and app.gqLibPages.get(block["program"]) != page:
                    shown.append(page)
    return []


def usedIn(app, page, key):
    """Returns a paragraph with links to the pages that use a declaration or show a program, or None."""
    order = [user for user in app.gqLibPages.values() if not user.startswith("reference/")]
    users = [user for user in app.gqLibUses.get(key, []) if user != page and user in order]
    users.sort(key=lambda user: (user.startswith("examples/"), order.index(user)))
    if not users:
        return None
    paragraph = nodes.paragraph("", _("Used in: "), classes=["used-in"])
    for user in users:
        if user is not users[0]:
            paragraph += nodes.Text(_(", "))
        paragraph += nodes.reference("", app.env.titles[user].astext(), internal=True,
                                     refuri=app.builder.get_relative_uri(page, user))
    return paragraph


def linkPages(app, document, page):
    """Links the files that comments in headers name."""
    for text in list(document.findall(nodes.Text)):
        parts = re.split(r"\b(docs/\S+\.md)\b", text.astext())
        if len(parts) > 1 and not isinstance(text.parent, (nodes.reference, nodes.literal, nodes.literal_block)):
            made = [nodes.Text(part) for part in parts]
            for i in range(1, len(parts), 2):
                target = app.gqLibPages[parts[i]]
                made[i] = nodes.reference("", app.env.titles[target].astext(), internal=True,
                                          refuri=app.builder.get_relative_uri(page, target))
            text.parent.replace(text, made)


def noteLanguage(app, document, page):
    """Notes on a page without a catalogue that it is not translated."""
    translated = any(pathlib.Path(folder, app.config.language, "LC_MESSAGES", f"{page}.po").exists()
                     for folder in app.config.locale_dirs)
    if app.config.language != "en" and not translated and not page.startswith("man/"):
        note = nodes.paragraph("", _("This page is in English only."), classes=["english-only"])
        document[0].insert(1, note)


def linkNames(app, document, page):
    if app.builder.format != "html":
        return
    noteLanguage(app, document, page)
    if page.startswith("reference/"):
        linkPages(app, document, page)
    names, _ = namesIn(app, page, document)
    for literal, refid in names:
        copy = literal.deepcopy()
        literal.replace_self(linkTo(app, page, refid, copy))
    for description in list(document.findall(addnodes.desc)):
        targets = [target for signature in description[:-1] for target in signature.findall(nodes.target)]
        users = [paragraph for target in targets for refid in target["ids"] if (paragraph := usedIn(app, page, refid))]
        if users:
            description[-1].append(users[0])
    files = {shown: file for file, shown in app.gqLibPages.items()}
    if page.startswith("examples/") and page in files:
        paragraph = usedIn(app, page, files[page])
        if paragraph:
            document[0].append(paragraph)


class Translator(HTML5Translator):
    """Links the names of the library in listings to their declarations."""

    def visit_literal_block(self, node):
        try:
            super().visit_literal_block(node)
        except nodes.SkipNode:
            if node.get("language") == "cpp":
                self.body[-1] = self.linked(node, self.body[-1])
            raise

    def linked(self, node, shown):
        app = self.builder.app
        page = self.builder.current_docname
        labels = app.env.get_domain("std").anonlabels
        names = {(name, number): refid for name, number, refid in programOf(app, node).names(node.rawsource)}
        counts = {}

        def link(found):
            name = html.unescape(found[2])
            counts[name] = counts.get(name, 0) + 1
            refid = names.get((name, counts[name]))
            if refid not in labels:
                return found[0]
            target, anchor = labels[refid]
            uri = self.builder.get_relative_uri(page, target) + "#" + anchor
            return f'{found[1]}<a class="declaration" href="{html.escape(uri)}">{found[2]}</a></span>'

        def linkHeader(found):
            target = next((shown for file, shown in app.gqLibPages.items() if file.endswith("/" + found[2])), None)
            if target is None:
                return found[0]
            uri = html.escape(self.builder.get_relative_uri(page, target))
            return f'{found[1]}<a class="declaration" href="{uri}">{found[2]}</a>{found[3]}'

        shown = re.sub(r'(<span class="cpf">&lt;gqLib/)(\w+\.h)(&gt;</span>)', linkHeader, shown)
        return re.sub(r'(<span class="n\w*">)(\w+)</span>', link, shown)


def otherLanguage(app, page, target):
    """Returns the address of a page on the site in the other language, relative to a page of this one."""
    up = "../" * page.count("/")
    return f"{up}zh/{target}.html" if app.config.language == "en" else f"{up}../{target}.html"


def addLanguage(app, page, template, context, document):
    context["other_language"] = ("zh-CN", "中文") if app.config.language == "en" else ("en", "English")
    context["other_language_page"] = otherLanguage(app, page, page)


def prepare(app):
    app.gqLibPages = json.loads(pathlib.Path(app.srcdir, "pages.json").read_text(encoding="utf-8"))
    app.gqLibDeclarations = Declarations(root / "build/docs/xml")


def setup(app):
    for transform in (SearchWords, SearchTerms, RepositoryLinks, Listings, DeclarationPages):
        app.add_transform(transform)
    app.set_translator("html", Translator)
    app.connect("builder-inited", prepare)
    app.connect("env-updated", collectUses)
    app.connect("doctree-resolved", linkNames)
    app.connect("html-page-context", addLanguage)
    return {"parallel_read_safe": True, "parallel_write_safe": True}
