#pragma once

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

/// A program that a test has started and whose standard output it reads line by line. The program ends where
/// its standard input does: when this goes.
class LineProgram
{
public:
    /// `arguments` begin with the program itself, which is looked up as a shell would.
    explicit LineProgram(const std::vector<std::string> &arguments);
    ~LineProgram();
    LineProgram(const LineProgram &) = delete;
    LineProgram &operator=(const LineProgram &) = delete;

    /// The next line without its end; none where there is none within half a minute, or the program has
    /// ended.
    std::optional<std::string> line();

    /// Closes its input, so that it ends. Returns all the lines that were not read yet.
    std::vector<std::string> finish();

private:
    bool read();

    pid_t m_process = -1;
    int m_input = -1;
    int m_output = -1;
    std::string m_read;
};
