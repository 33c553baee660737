#pragma once

#include <cstdlib>
#include <ctime>
#include <string>

// The process's local time zone for as long as it lives; after that the one from before.
class TimeZone {
public:
    explicit TimeZone(const char* name)
    {
        const char* before = std::getenv("TZ");
        wasSet = before != nullptr;
        former = wasSet ? before : "";
        setenv("TZ", name, 1);
        tzset();
    }

    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

    ~TimeZone()
    {
        if (wasSet)
            setenv("TZ", former.c_str(), 1);
        else
            unsetenv("TZ");
        tzset();
    }

private:
    bool wasSet;
    std::string former;
};
