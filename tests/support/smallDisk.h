#pragma once

#include <string>

#include <sched.h>
#include <sys/mount.h>

// A small disk mounted on a folder: a tmpfs in a mount namespace of this thread, in which the thread stays.
//
// Needs permission to mount, usually root. If `exists` is false, skip the test.
class SmallDisk {
public:
    // `options` as in tmpfs(5), such as "size=64k" or "nr_inodes=2", which includes the folder itself.
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
