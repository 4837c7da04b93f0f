#include "LineProgram.h"

#include <array>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

LineProgram::LineProgram(const std::vector<std::string> &arguments)
{
    std::array<int, 2> input{};
    std::array<int, 2> output{};
    if (pipe2(input.data(), O_CLOEXEC) != 0 || pipe2(output.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    posix_spawn_file_actions_t actions{};
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    std::vector<char *> words;
    words.reserve(arguments.size() + 1);
    for (const auto &argument : arguments)
        words.push_back(const_cast<char *>(argument.c_str()));
    words.push_back(nullptr);
    const int error = posix_spawnp(&m_process, words[0], &actions, nullptr, words.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(input[0]);
    close(output[1]);
    m_input = input[1];
    m_output = output[0];
    if (error != 0)
        throw std::runtime_error("cannot start " + arguments.front());
}

LineProgram::~LineProgram()
{
    finish();
    close(m_output);
}

bool LineProgram::read()
{
    constexpr int patience = 30'000; // milliseconds
    pollfd ready{m_output, POLLIN, 0};
    if (poll(&ready, 1, patience) != 1)
        return false;
    std::array<char, 4096> bytes{};
    const auto count = ::read(m_output, bytes.data(), bytes.size());
    if (count <= 0)
        return false;
    m_read.append(bytes.data(), static_cast<std::size_t>(count));
    return true;
}

std::optional<std::string> LineProgram::line()
{
    auto end = m_read.find('\n');
    while (end == std::string::npos) {
        if (!read())
            return std::nullopt;
        end = m_read.find('\n');
    }
    auto line = m_read.substr(0, end);
    m_read.erase(0, end + 1);
    return line;
}

std::vector<std::string> LineProgram::finish()
{
    std::vector<std::string> lines;
    if (m_input < 0)
        return lines;
    close(m_input);
    m_input = -1;
    while (auto next = line())
        lines.push_back(*std::move(next));
    waitpid(m_process, nullptr, 0);
    return lines;
}
