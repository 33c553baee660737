"""Sphinx extension that completes the theme as Debian 12 packages it: browsers refuse the import in its script, which is
not bundled; its style lacks the dark colours for readers whose system is dark, and imports a file of web servers."""
import pathlib
import re

normalize = pathlib.Path("/usr/share/nodejs/normalize.css/normalize.css")


def complete(app, error):
    if error or app.builder.format != "html":
        return
    static = pathlib.Path(app.outdir, "_static")

    script = static / "scripts/furo.js"
    text = script.read_text(encoding="utf-8")
    script.write_text(re.sub(r"^import Gumshoe from .*\n", "", text), encoding="utf-8")

    style = static / "styles/furo.css"
    text = style.read_text(encoding="utf-8")
    text = re.sub(r"^@import url\(/javascript.*\n", lambda _: normalize.read_text(encoding="utf-8"), text)
    dark = re.search(r'^  body\[data-theme="dark"\] \{(.*?)\}', text, re.M | re.S)
    if dark and "prefers-color-scheme" not in text:
        automatic = f'body:not([data-theme="light"]) {{{dark[1]}}}'
        text += f"\n@media screen and (prefers-color-scheme: dark) {{\n  {automatic}\n}}\n"
    style.write_text(text, encoding="utf-8")


def setup(app):
    app.add_js_file("scripts/gumshoe-patched.js", priority=100)
    app.connect("build-finished", complete)
    return {"parallel_read_safe": True, "parallel_write_safe": True}
