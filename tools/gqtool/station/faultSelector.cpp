#include "faultSelector.h"

#include "gqtool/integer.h"

#include <QStringList>

#include <climits>

bool FaultSelector::read(const QString& text, unsigned int seed)
{
    generator.seed(seed);
    if (text == "every")
        return true;
    if (text.startsWith("every/"))
        return readInt(text.section('/', 1), 1, INT_MAX, step);
    if (text.endsWith('%')) {
        bool isNumber = false;
        percent = text.chopped(1).toDouble(&isNumber);
        return isNumber && percent > 0 && percent <= 100;
    }
    const QStringList ends = text.split('-');
    return ends.size() <= 2 && readInt(ends.constFirst(), 1, INT_MAX, first) &&
           readInt(ends.constLast(), first, INT_MAX, last);
}

bool FaultSelector::chooses(int number)
{
    if (percent < 100)
        return static_cast<double>(generator()) < percent / 100 * 0x1p32;
    return number >= first && number <= last && number % step == 0;
}
