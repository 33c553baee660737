#pragma once

#include <string>

#include <sched.h>
#include <sys/mount.h>

// A disk with little room on a folder: a tmpfs that this thread alone sees, in a mount namespace of its own, in which
// the thread stays.
//
// It takes a system that lets the test do so, mostly as root: where `exists` is false, skip the test.
class SmallDisk {
public:
    // `options` as tmpfs(5) has them, such as "size=64k" or "nr_inodes=2", the folder itself being one of these.
    SmallDisk(const std::string& mountedFolder, const char* options)
        : folder(mountedFolder),
          isMounted(::unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                    ::mount("tmpfs", folder.c_str(), "tmpfs", 0, options) == 0)
    {
    }

    ~SmallDisk()
    {
        if (isMounted)
            ::umount2(folder.c_str(), MNT_DETACH);
    }

    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    bool exists() const { return isMounted; }

    bool makeReadOnly(bool isReadOnly)
    {
        return ::mount(nullptr, folder.c_str(), nullptr, MS_REMOUNT | (isReadOnly ? MS_RDONLY : 0), nullptr) == 0;
    }

private:
    std::string folder;
    bool isMounted;
};
