#pragma once

#include <QStringList>

// Prints the first 20 errors as lines of standard error, and the number of the others.
void printErrors(const QStringList& errors);

// The line that follows the listed errors if there are more than --max-errors.
QString moreErrorsText(long long count);
