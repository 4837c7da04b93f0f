#pragma once

#include <string>

/// Tells when a file of one name appears in a folder, or the folder itself is no longer what it was.
class FolderWatch
{
public:
    explicit FolderWatch(std::string fileName);
    ~FolderWatch();
    FolderWatch(const FolderWatch &) = delete;
    FolderWatch &operator=(const FolderWatch &) = delete;

    /// Watches the folder that has this path now, and no other any more. False where that cannot be had;
    /// errno says why.
    bool watch(const std::string &folder);

    /// Becomes readable when there is something to take; -1 while nothing is watched.
    int descriptor() const { return m_notifier; }

    /// Takes what has been told. True where it is worth looking for the file again.
    bool takeNews();

private:
    bool isNews(const struct inotify_event &event) const;

    std::string m_fileName;
    int m_notifier = -1;
    int m_watch = -1;
};
