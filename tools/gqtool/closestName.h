#pragma once

#include <QStringList>

// Returns the name that `word` most likely misspells, or an empty text if none is close enough: up to a third of the
// letters, rounded up, may be inserted, removed, replaced or swapped with their neighbour. Case is ignored. Of names
// equally close, one of the length of `word` comes first.
QString closestName(const QString& word, const QStringList& names);

// Returns the end of an error message, "; did you mean 'NAME'?", or an empty text for an empty name.
QString didYouMean(const QString& name);
