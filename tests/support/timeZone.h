#pragma once

#include <cstdlib>
#include <ctime>
#include <string>

// Sets the local time zone of the process for the lifetime of the object.
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
