// Prints the moment and the text of a relative time code, in the time zone that TZ names.
//   relativeTime CODE [BASE]     BASE is seconds since 1970 (default: now)

#include <gqLib/gqTools.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>

int main(int argc, char* argv[])
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: relativeTime CODE [BASE]\n");
        return 2;
    }
    //! [moment]
    const int code = std::atoi(argv[1]);
    const auto now = static_cast<int>(std::time(nullptr)); // the library never reads the clock
    const unsigned int moment = CGqTools::calcRelTime(code, argc > 2 ? std::atoi(argv[2]) : now);
    std::printf("%u: %s\n", moment, qPrintable(CGqTools::relTime2Str(code))); // 155: the 5th of this month, 00:00:00
    //! [moment]
    return 0;
}
