#include "results.h"

QString resultText(int result)
{
    switch (result) {
    case 0:
        return "no reply in time, a frame that failed its check, or a greeting that was refused";
    case -1:
        return "the link is dead: refused, closed or failed";
    case -2:
        return "an error frame with no code";
    case -5:
        return "a payload shorter than its form demands";
    default:
        return "the code of an error frame";
    }
}
