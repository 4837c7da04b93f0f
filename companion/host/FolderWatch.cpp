#include "FolderWatch.h"

#include <cerrno>
#include <cstring>
#include <sys/inotify.h>
#include <unistd.h>
#include <utility>

namespace {

// A program may make its socket under another name and rename it. A folder that was open to others may be
// closed to them: IN_ATTRIB.
constexpr std::uint32_t events =
    IN_CREATE | IN_MOVED_TO | IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR | IN_DONT_FOLLOW;

} // namespace

FolderWatch::FolderWatch(std::string fileName)
    : m_fileName(std::move(fileName))
{}

FolderWatch::~FolderWatch()
{
    if (m_notifier >= 0)
        close(m_notifier);
}

bool FolderWatch::watch(const std::string &folder)
{
    if (m_notifier < 0)
        m_notifier = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (m_notifier < 0)
        return false;
    // For the folder that is watched already this gives the same number again.
    const int watch = inotify_add_watch(m_notifier, folder.c_str(), events);
    const int problem = errno;
    if (m_watch >= 0 && watch != m_watch)
        inotify_rm_watch(m_notifier, m_watch);
    m_watch = watch;
    errno = problem;
    return watch >= 0;
}

bool FolderWatch::takeNews()
{
    bool news = false;
    alignas(inotify_event) char bytes[4096];
    for (ssize_t size = 0; (size = read(m_notifier, bytes, sizeof bytes)) > 0;) {
        for (ssize_t at = 0; at < size;) {
            const auto *event = reinterpret_cast<const inotify_event *>(bytes + at);
            news = isNews(*event) || news;
            if (event->wd == m_watch && (event->mask & IN_IGNORED) != 0)
                m_watch = -1; // the folder is gone, and the watch with it
            at += ssize_t(sizeof(inotify_event) + event->len);
        }
    }
    return news;
}

bool FolderWatch::isNews(const inotify_event &event) const
{
    if ((event.mask & IN_Q_OVERFLOW) != 0)
        return true;
    if (event.wd != m_watch)
        return false;
    if ((event.mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED)) != 0)
        return true;
    if (event.len == 0)
        return (event.mask & IN_ATTRIB) != 0;
    return (event.mask & (IN_CREATE | IN_MOVED_TO)) != 0 && m_fileName == event.name;
}
