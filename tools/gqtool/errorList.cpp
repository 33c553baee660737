#include "errorList.h"

#include "shared/console.h"
#include "shared/text.h"

void printErrors(const QStringList& errors)
{
    static const int most = 20;
    for (const QString& error : errors.mid(0, most))
        printError(error);
    const int others = errors.size() - most;
    if (others > 0)
        printError((others == 1 ? Text::tr("%1 more error") : Text::tr("%1 more errors")).arg(others));
}

QString moreErrorsText(long long count)
{
    return (count == 1 ? Text::tr("%1 more error; --max-errors N lists N")
                       : Text::tr("%1 more errors; --max-errors N lists N"))
        .arg(count);
}
