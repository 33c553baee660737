"""Sphinx extension: what the site's search takes for words, in English and in Chinese."""
import logging
import pathlib
import re

import jieba
import snowballstemmer
from docutils import nodes
from sphinx.search.en import SearchEnglish
from sphinx.search.zh import SearchChinese
from sphinx.transforms import SphinxTransform

jieba.setLogLevel(logging.WARNING)
chinese = "\u4e00-\u9fff"
glossary = pathlib.Path(__file__).resolve().parents[1] / "guide/glossary.md"


def glossaryTerms():
    """Returns the Chinese terms of the glossary."""
    cells = re.findall(r"^\| [^|]+ \| ([^|]+) \|", glossary.read_text(encoding="utf-8"), re.M)
    return [term for cell in cells for term in cell.split(", ") if re.fullmatch(f"[{chinese}]{{2,}}", term)]


for word in glossaryTerms():
    jieba.add_word(word)


def joined(text):
    """Returns 'timeout' for each 'time-out'."""
    return [word.replace("-", "") for word in re.findall(r"[a-zA-Z0-9_]+(?:-[a-zA-Z0-9_]+)+", text)]


class English(SearchEnglish):
    def split(self, text):
        return super().split(text) + joined(text)

    def splitQuery(self, query, known):
        """Does what Sphinx's script does."""
        return re.findall(r"\w+", query)


class Chinese(SearchChinese):
    """Jieba cuts a text into words, among them the terms of the glossary, but not every text with the same characters
    alike. Each pair of characters is therefore a word too. A query is cut into the longest words that occur on the site;
    other characters are left out."""

    stopwords = SearchChinese.stopwords | set("什么 怎么 怎样 如何 为何 为什么 怎么办 是否".split())
    # The script has the number of results in the text before it looks for its translation.
    js_splitter_code = """
Documentation.TRANSLATIONS = new Proxy(Documentation.TRANSLATIONS, {
    get: (texts, text) => {
        const count = /^Search finished, found ([0-9]+) page/.exec(text);
        return count ? `找到 ${count[1]} 页。` : texts[text];
    },
});
var splitQuery = (query) => {
    const known = (word) => word in Search._index.terms || word in Search._index.titleterms;
    const cut = (text) => {
        const words = [];
        for (let i = 0; i < text.length; ) {
            let length = Math.min(text.length - i, 8);
            while (length > 1 && !known(text.substr(i, length))) length--;
            if (length > 1) words.push(text.substr(i, length));
            i += length;
        }
        return words.length ? words : [text];
    };
    const runs = query.match(/[\\u4e00-\\u9fff]+|[^\\u4e00-\\u9fff\\W]+/g) || [];
    Scorer.words = runs.flatMap((run) => /[\\u4e00-\\u9fff]/.test(run) ? cut(run) : [run]);
    return Scorer.words;
};
"""

    def init(self, options):
        super().init(options)
        self.stemmer = snowballstemmer.stemmer("porter")  # that of the script

    def stem(self, word):
        return self.stemmer.stemWord(word.lower())

    def split(self, text):
        pairs = [run[i : i + 2] for run in re.findall(f"[{chinese}]{{2,}}", text) for i in range(len(run) - 1)]
        return super().split(text) + pairs + joined(text)

    def splitQuery(self, query, known):
        """Does what the script does; known() returns true for words that occur on the site."""
        words = []
        for run in re.findall(f"[{chinese}]+|[^{chinese}\\W]+", query):
            words += self.cut(run, known) if re.match(f"[{chinese}]", run) else [run]
        return words

    def cut(self, text, known):
        words = []
        i = 0
        while i < len(text):
            length = next((length for length in range(8, 1, -1) if known(text[i : i + length])), 1)
            if length > 1:
                words.append(text[i : i + length])
            i += length
        return words or [text]


class KeywordSplit(SphinxTransform):
    """Splits the keywords of Chinese pages as their text: Sphinx takes each as one word. Runs after the translation."""

    default_priority = 30

    def apply(self, **kwargs):
        if self.config.language == "zh_CN":
            for node in self.document.findall(nodes.meta):
                words = Chinese({}).split(node["content"])
                node["content"] = ", ".join(dict.fromkeys(word.strip() for word in words if word.strip(" ,，、")))


def setup(app):
    app.add_search_language(English)
    app.add_search_language(Chinese)
    app.add_transform(KeywordSplit)
    return {"parallel_read_safe": True, "parallel_write_safe": True}
