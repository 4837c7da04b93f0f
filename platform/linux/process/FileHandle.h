#pragma once

#include <unistd.h>
#include <utility>

/// A file descriptor that is closed with its owner.
class FileHandle
{
public:
    FileHandle() = default;
    explicit FileHandle(int descriptor)
        : m_descriptor(descriptor)
    {}
    FileHandle(FileHandle &&other) noexcept
        : m_descriptor(std::exchange(other.m_descriptor, -1))
    {}
    FileHandle &operator=(FileHandle &&other) noexcept
    {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
    ~FileHandle()
    {
        if (m_descriptor >= 0)
            close(m_descriptor);
    }

    explicit operator bool() const { return m_descriptor >= 0; }
    int descriptor() const { return m_descriptor; }

private:
    int m_descriptor = -1;
};
