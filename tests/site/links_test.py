"""The check of the site's links: what is there is taken, what is not is named with the file to change."""

import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent.parent / "tools/site"))
import links


class Links(unittest.TestCase):
    def broken(self, link):
        with tempfile.TemporaryDirectory() as folder:
            site = Path(folder)
            (site / "classes").mkdir()
            (site / "a b.html").write_text('<h2 id="über">x</h2><a name="old"></a>')
            (site / "style.css").write_text("")
            (site / "classes/set.html").write_text(f'<h1 id="top">Set</h1><a href="{link}">x</a><img src="../style.css">')
            return links.broken(site, {"classes/set.html": "classes/set.md"})

    def test_what_is_there_is_taken(self):
        for link in ("#top", "set.html", "../a%20b.html#%C3%BCber", "../a b.html#old", "../style.css#any",
                     "https://example.org/a?b#c", "http://example.org", "mailto:a@example.org"):
            self.assertEqual(self.broken(link), [], link)

    def test_what_is_not_there_is_named(self):
        for link, fault in (("#bottom", "heading"), ("../a b.html#top", "heading"), ("a b.html", "page"),
                            ("../../classes/set.html", "page"), ("", None), ("..", "page"), ("https:///x", "address"),
                            ("http://a b/", "address"), ("ftp://example.org/x", "no way"), ("mailto:nobody", "mail")):
            told = self.broken(link)
            if fault is None:
                self.assertEqual(told, [], link)
            else:
                self.assertEqual(len(told), 1, link)
                self.assertRegex(told[0], f'^classes/set.md: "{link}": .*{fault}')


if __name__ == "__main__":
    unittest.main()
