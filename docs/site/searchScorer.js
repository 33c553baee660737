/* Scores of search results: those of Sphinx, but pages that mention everything come last, and Chinese pages that lack a
   word of the query come after those that have all. Sphinx finds the former if a word has two characters. */
var Scorer = {
    objNameMatch: 11,
    objPartialMatch: 6,
    objPrio: { 0: 15, 1: 5, 2: -5 },
    objPrioDefault: 0,
    title: 15,
    partialTitle: 7,
    term: 5,
    partialTerm: 2,
    last: ["CHANGELOG", "benchmarks/README", "guide/oddities"],
    words: [], // of a Chinese query
    lacks(page, word) {
        const index = Search._index;
        const stem = new Stemmer().stemWord(word.toLowerCase());
        const pages = [index.terms[stem], index.titleterms[stem]].flat().filter((each) => each !== undefined);
        return pages.length > 0 && !pages.includes(index.docnames.indexOf(page));
    },
    score([page, title, anchor, description, score]) {
        const lacking = Scorer.words.filter((word) => !stopwords.includes(word) && Scorer.lacks(page, word));
        return score - (Scorer.last.includes(page) ? 6 : 0) - 100 * lacking.length;
    },
};
