"""Tells which links of a folder of HTML pages lead nowhere. Nothing is fetched: links to elsewhere need a proper form."""

import posixpath
import re
from html.parser import HTMLParser
from urllib.parse import unquote, urlsplit

LEADING = {"a": "href", "area": "href", "link": "href", "img": "src", "script": "src", "iframe": "src"}


class Reader(HTMLParser):
    """Where a page leads, and the anchors that lead into it."""

    def __init__(self, text):
        super().__init__()
        self.leads = []
        self.anchors = set()
        self.feed(text)

    def handle_starttag(self, tag, attrs):
        found = dict(attrs)
        self.anchors |= {found[key] for key in ("id", "name") if found.get(key)}
        lead = found.get(LEADING.get(tag, ""))
        if lead is not None:
            self.leads.append(lead)


def external_fault(link):
    parts = urlsplit(link)
    if parts.scheme == "mailto":
        return None if re.fullmatch(r"[^@\s]+@[^@\s]+\.[^@\s]+", parts.path) else "no mail address"
    if parts.scheme not in ("http", "https"):
        return f'"{parts.scheme}:" is no way to a page'
    return None if re.fullmatch(r"[\w.-]+\.\w+", parts.hostname or "") and " " not in link else "no address of a page"


def internal_fault(pages, files, page, link):
    path, _, anchor = link.partition("#")
    target = posixpath.normpath(posixpath.join(posixpath.dirname(page), unquote(path))) if path else page
    if target not in files:
        return "no such page or file"
    if anchor and target in pages and unquote(anchor) not in pages[target].anchors:
        return "no such heading or name there"
    return None


def broken(folder, sources):
    """A line for each link that leads nowhere. `sources` names, by page, the file that a person would change."""
    files = {path.relative_to(folder).as_posix(): path for path in folder.rglob("*") if path.is_file()}
    pages = {name: Reader(path.read_text(encoding="utf-8")) for name, path in files.items() if name.endswith(".html")}
    faults = []
    for name, page in sorted(pages.items()):
        for link in page.leads:
            isElsewhere = re.match(r"[a-z][a-z0-9+.-]*:|//", link)
            fault = external_fault(link) if isElsewhere else internal_fault(pages, files, name, link)
            if fault:
                faults.append(f'{sources.get(name, name)}: "{link}": {fault}')
    return sorted(set(faults))
