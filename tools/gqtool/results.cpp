#include "results.h"

QString resultText(int result)
{
    switch (result) {
    case 0:
        return "no reply in time, a frame that failed its check, a greeting that was refused, or a text that overruns "
               "its payload";
    case -1:
        return "the link is dead: refused, closed or failed";
    case -2:
        return "an error frame with no code";
    case -5:
        return "a payload shorter than its form demands";
    default:
        return "the server's own code, from an error frame";
    }
}
