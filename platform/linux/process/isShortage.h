#pragma once

#include <cerrno>

/// Whether a system call failed because the system is short of something at this moment: open files, memory
/// or processes. The same call may do better in a second.
inline bool isShortage(int error)
{
    return error == EMFILE || error == ENFILE || error == ENOMEM || error == EAGAIN || error == EINTR;
}
