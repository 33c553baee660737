#include "encodingOption.h"

#include "closestName.h"
#include "gqtool/records/textEncoding.h"
#include "shared/console.h"
#include "shared/text.h"

bool EncodingOption::apply() const
{
    if (setTextEncoding(option.text()))
        return true;
    usageError(Text::tr("--encoding must be an encoding that Qt knows, such as GBK, got '%1'").arg(option.text()) +
               didYouMean(closestName(option.text(), textEncodings())));
    return false;
}

void EncodingOption::printHint()
{
    if (!encodingHint().isEmpty())
        printError(encodingHint());
}
