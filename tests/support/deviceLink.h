#pragma once

#include <cerrno>
#include <string>

#include <unistd.h>

// Makes another device available as /dev/ttyS<number> for the lifetime of the object.
class DeviceLink {
public:
    explicit DeviceLink(const std::string& device)
    {
        for (int number = 91; number < 1000 && path.empty(); ++number) {
            const std::string name = "/dev/ttyS" + std::to_string(number);
            if (::symlink(device.c_str(), name.c_str()) == 0) {
                path = name;
                held = number;
            } else if (errno != EEXIST) {
                return;
            }
        }
    }

    ~DeviceLink()
    {
        if (!path.empty())
            ::unlink(path.c_str());
    }

    DeviceLink(const DeviceLink&) = delete;
    DeviceLink& operator=(const DeviceLink&) = delete;

    bool isMade() const { return !path.empty(); }
    int number() const { return held; }

private:
    std::string path;
    int held = -1;
};
