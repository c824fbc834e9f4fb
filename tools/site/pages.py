"""Markdown documents as HTML pages with one navigation, their links led to where the site has what they name."""

import html
import os
import posixpath
import re
import shutil
import string
from functools import cached_property
from pathlib import Path

from markdown_it import MarkdownIt

HERE = Path(__file__).resolve().parent
START = "docs/index.md"
REFERENCE = [("Classes", "api/annotated.html"), ("Namespaces", "api/namespaces.html"), ("Headers", "api/files.html"),
             ("Functions by name", "api/globals.html"), ("Members by name", "api/functions.html")]


def slug(text, taken):
    """The anchor of a heading, as the repository's web pages make it; `taken` counts those of one page."""
    name = re.sub(r"[^\w\- ]", "", text.strip().lower()).replace(" ", "-")
    count = taken[name] = taken.get(name, -1) + 1
    return f"{name}-{count}" if count else name


def plain(inline):
    """The text of a heading or a link, without its marks."""
    return "".join(child.content for child in inline.children or [] if child.type in ("text", "code_inline"))


class Page:
    """One document: where it comes from, where it goes (relative to the site), and what it says."""

    def __init__(self, source, place):
        self.source = source
        self.place = place
        parser = MarkdownIt("commonmark", {"html": False}).enable("table")
        self.renderer = parser.renderer
        self.options = parser.options
        self.tokens = parser.parse(source.read_text(encoding="utf-8"))
        self.title = source.stem
        self.sections = []
        self._mark_headings()

    def _mark_headings(self):
        taken = {}
        for at, token in enumerate(self.tokens):
            if token.type != "heading_open":
                continue
            text = plain(self.tokens[at + 1])
            anchor = slug(text, taken)
            token.attrSet("id", anchor)
            if token.tag == "h1" and not self.sections:
                self.title = text
            if token.tag == "h2":
                self.sections.append((text, anchor))

    def links(self):
        """Each link or picture: its token and the name of the attribute that leads somewhere."""
        for block in self.tokens:
            for token in block.children or []:
                if token.type in ("link_open", "image"):
                    yield token, "href" if token.type == "link_open" else "src"

    def entries(self):
        """The list items that begin with a link, under the heading (h2) that they stand below: for a navigation."""
        group = ""
        for at, token in enumerate(self.tokens):
            if token.type == "heading_open" and token.tag == "h2":
                group = plain(self.tokens[at + 1])
            inline = self.tokens[at + 2] if token.type == "list_item_open" else None
            children = inline.children if inline and inline.type == "inline" else []
            if children and children[0].type == "link_open":
                closing = next(i for i, child in enumerate(children) if child.type == "link_close")
                text = "".join(child.content for child in children[1:closing])
                yield group, text, children[0].attrGet("href")

    def contents(self):
        wide = re.sub(r"(<table>.*?</table>)", r'<div class="wide">\1</div>',
                      self.renderer.render(self.tokens, self.options, {}), flags=re.S)
        return re.sub(r'(<h[2-4] id="([^"]*)">)(.*?)(</h)', r'\1\3 <a class="here" href="#\2">#</a>\4', wide)


class Site:
    """All pages. `places` says where those go that are not documents of the tree."""

    def __init__(self, root, target, facts, places):
        self.root = root
        self.target = target
        self.facts = facts
        self.places = places
        self.pages = {}
        self.files = {}
        self.folders = {}
        self.template = string.Template((HERE / "page.html").read_text())

    def add(self, source):
        """Adds the document and, behind it, those that it names. A document that is not there is left out."""
        if source in self.pages or not source.is_file():
            return
        page = self.pages[source] = Page(source, self.places.get(source) or self._place_of(source))
        for token, attribute in page.links():
            named = self._named_file(page, token.attrGet(attribute))
            if named and named.suffix == ".md":
                self.add(named)
            elif named and named.is_file():
                self._add_file(named)
            elif named and named.is_dir():
                self.folders[named] = f"files/{named.relative_to(self.root).as_posix()}/index.html"
                for file in filter(Path.is_file, named.iterdir()):
                    self._add_file(file)

    def _add_file(self, file):
        self.files[file] = f"files/{file.relative_to(self.root).as_posix()}"

    def _place_of(self, source):
        relative = source.relative_to(self.root)
        name = relative.name if relative.parent == Path("docs") else relative.as_posix()
        return re.sub(r"\.md$", ".html", name if "/" in name else name.lower())

    def sources(self):
        """By place in the site, what a person would change."""
        return {page.place: os.path.relpath(source, self.root) for source, page in self.pages.items()}

    def _named_file(self, page, link):
        """The file of the tree that a link names; None for links to elsewhere and inside the page."""
        path = link.partition("#")[0]
        if not path or re.match(r"[a-z][a-z0-9+.-]*:", path):
            return None
        named = Path(os.path.normpath(page.source.parent / path))
        return named if self.root in named.parents or named in self.places else None

    def _led(self, page, link):
        """The link as it is written on the page's HTML; one to something that the site lacks stays as it is."""
        named = self._named_file(page, link)
        place = self.pages[named].place if named in self.pages else (self.files | self.folders).get(named)
        if place is None:
            return link
        anchor = link.partition("#")[2]
        return posixpath.relpath(place, posixpath.dirname(page.place)) + (f"#{anchor}" if anchor else "")

    @cached_property
    def navigation(self):
        """Groups of (text, place): what the start page lists, then what it does not, the classes, the reference."""
        start = self.pages[self.root / START]
        groups = {"": [("Start", start.place)]}
        for group, text, link in start.entries():
            named = self.pages.get(self._named_file(start, link))
            if named:
                groups.setdefault(group, []).append((text, named.place))
        listed = {place for entries in groups.values() for _, place in entries}
        rest = [(page.title, page.place) for page in self.pages.values() if page.place not in listed]
        for group, isIn in (("More", False), ("For scripts", True)):
            entries = sorted(entry for entry in rest if entry[1].startswith("classes/") == isIn)
            if entries:
                groups[group] = entries
        return groups | {"C++ reference": REFERENCE}

    def _navigation_html(self, place, up):
        lines = []
        for group, entries in self.navigation.items():
            lines += [f"<h2>{html.escape(group)}</h2>"] if group else []
            lines.append("<ul>")
            for text, target in entries:
                current = ' aria-current="page"' if target == place else ""
                lines.append(f'<li><a href="{up}{target}"{current}>{html.escape(text).replace(".", ".<wbr>")}</a></li>')
            lines.append("</ul>")
        return "\n".join(lines)

    def _framed(self, place, up, title, body):
        return self.template.substitute(
            title=html.escape(title), up=up, body=body, navigation=self._navigation_html(place, up),
            project=html.escape(self.facts["NAME"]), version=html.escape(self.facts["VERSION"]))

    def reference_frame(self):
        """What stands above and below each page that Doxygen writes: two texts, with Doxygen's own `$title`."""
        mark = "<!-- contents -->"
        # Doxygen closes a division of this name, which it takes the page to have opened.
        framed = self._framed("", "../", "DOXYGEN_TITLE", f'<div id="top">{mark}').replace("DOXYGEN_TITLE", "$title")
        return framed.split(mark)

    def write(self):
        assert self.navigation  # made from links as they were written
        for page in self.pages.values():
            for token, attribute in page.links():
                token.attrSet(attribute, self._led(page, token.attrGet(attribute)))
        for page in self.pages.values():
            self._write_page(page)
        for file, place in self.files.items():
            (self.target / place).parent.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(file, self.target / place)
        for folder, place in self.folders.items():
            self._write_folder(folder, place)
        shutil.copyfile(HERE / "style.css", self.target / "style.css")

    def _write_folder(self, folder, place):
        title = html.escape(folder.relative_to(self.root).as_posix())
        names = sorted(html.escape(file.name) for file in self.files if file.parent == folder)
        entries = "".join(f'<li><a href="{name}">{name}</a></li>' for name in names)
        body = f"<article><h1>{title}</h1><ul>{entries}</ul></article>"
        (self.target / place).parent.mkdir(parents=True, exist_ok=True)
        (self.target / place).write_text(self._framed(place, "../" * place.count("/"), title, body), encoding="utf-8")

    def _write_page(self, page):
        up = "../" * page.place.count("/")
        sections = "".join(f'<li><a href="#{anchor}">{html.escape(text)}</a></li>' for text, anchor in page.sections)
        inside = f'<nav class="sections" aria-label="On this page"><ul>{sections}</ul></nav>' if sections else ""
        file = self.target / page.place
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(self._framed(page.place, up, page.title, f"{inside}<article>{page.contents()}</article>"),
                        encoding="utf-8")
