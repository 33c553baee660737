/* Scores of search results: those of Sphinx, but pages that mention everything come last. */
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
    score: ([page, title, anchor, description, score]) => (Scorer.last.includes(page) ? score - 6 : score),
};
