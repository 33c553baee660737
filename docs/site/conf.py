"""Settings of the site. scripts/docs runs Sphinx."""
import os
import pathlib
import re
import sys

root = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(root / "docs/site"))

project = "gqLib"
author = "the gqLib authors"
copyright = author
version = re.search(r"^project\(gqLib VERSION ([0-9.]+)", (root / "CMakeLists.txt").read_text(), re.M)[1]
release = version
language = "en"

extensions = ["myst_parser", "breathe", "gqLibPages", "siteSearch", "furoOfDebian"]
exclude_patterns = ["pages.json"]
myst_heading_anchors = 4

breathe_projects = {"gqLib": str(root / "build/docs/xml")}
breathe_default_project = "gqLib"
breathe_show_include = False

# Every name in a declaration must have a page, except those of Qt and the standard library.
nitpicky = True
nitpick_ignore_regex = [("cpp:identifier", r"(gqdb$|std|Q[A-Z]|pthread_|sockaddr).*")]

primary_domain = "cpp"
highlight_language = "text"
smartquotes = False

html_theme = "furo"
templates_path = ["templates"]
html_title = f"gqLib {version}"
html_static_path = ["gqlib.css"]
html_css_files = ["gqlib.css"]
html_copy_source = False
html_search_scorer = str(root / "docs/site/searchScorer.js")
html_show_sphinx = False
html_show_copyright = False
html_last_updated_fmt = None

# The Chinese site: catalogues of the pages' texts, one for each page, and sphinx.po for the texts around them. scripts/docs
# copies them from docs/site/locale: Sphinx compiles them where they are.
locale_dirs = [str(root / "build/docs/locale")]
gettext_compact = False
gettext_location = False
