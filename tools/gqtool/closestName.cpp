#include "closestName.h"
#include "shared/text.h"

#include <algorithm>
#include <vector>

// Returns the least number of edits that change `from` to `to`.
static int editDistance(const QString& from, const QString& to)
{
    // edits[i][j] changes the first i letters of `from` to the first j of `to`.
    std::vector<std::vector<int>> edits(static_cast<size_t>(from.size()) + 1,
                                        std::vector<int>(static_cast<size_t>(to.size()) + 1));
    for (size_t i = 0; i < edits.size(); ++i) {
        for (size_t j = 0; j < edits[i].size(); ++j) {
            if (i == 0 || j == 0) {
                edits[i][j] = static_cast<int>(i + j);
                continue;
            }
            const auto letter = [&](size_t back) { return from[static_cast<int>(i - back)]; };
            const auto other = [&](size_t back) { return to[static_cast<int>(j - back)]; };
            const int replaced = edits[i - 1][j - 1] + (letter(1) == other(1) ? 0 : 1);
            edits[i][j] = std::min({edits[i - 1][j] + 1, edits[i][j - 1] + 1, replaced});
            if (i > 1 && j > 1 && letter(1) == other(2) && letter(2) == other(1))
                edits[i][j] = std::min(edits[i][j], edits[i - 2][j - 2] + 1);
        }
    }
    return edits.back().back();
}

QString closestName(const QString& word, const QStringList& names)
{
    QString closest;
    int least = 0; // edits, and then whether the lengths differ
    for (const QString& name : names) {
        const int most = (std::max(word.size(), name.size()) + 2) / 3;
        if (std::abs(word.size() - name.size()) > most)
            continue;
        const int distance = editDistance(word.toLower(), name.toLower());
        const int rank = 2 * distance + (name.size() == word.size() ? 0 : 1);
        if (distance <= most && (closest.isEmpty() || rank < least)) {
            closest = name;
            least = rank;
        }
    }
    return closest;
}

QString didYouMean(const QString& name)
{
    return name.isEmpty() ? QString() : Text::tr("; did you mean '%1'?").arg(name);
}
