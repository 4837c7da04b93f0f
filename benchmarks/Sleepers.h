#pragma once

#include <csignal>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

/// Processes that only sleep, to make a machine look busy. They end with this object, or with its process.
class Sleepers
{
public:
    explicit Sleepers(int count)
    {
        for (int number = 0; number < count; ++number) {
            const auto id = fork();
            if (id == 0) {
                prctl(PR_SET_PDEATHSIG, SIGKILL);
                execl("/bin/sleep", "sleep", "3600", nullptr);
                _exit(127);
            }
            if (id > 0)
                m_ids.push_back(id);
        }
    }
    Sleepers(const Sleepers &) = delete;
    Sleepers &operator=(const Sleepers &) = delete;
    ~Sleepers()
    {
        for (const auto id : m_ids)
            kill(id, SIGKILL);
        for (const auto id : m_ids)
            waitpid(id, nullptr, 0);
    }

    size_t count() const { return m_ids.size(); }

private:
    std::vector<pid_t> m_ids;
};
