#include "ConsoleMailer.h"

#include "textChecks.h"

#include <cstdio>
#include <spdlog/fmt/fmt.h>

boost::asio::awaitable<Result<>> ConsoleMailer::send(Mail mail)
{
    if (mailAddress(mail.to) != mail.to)
        co_return Failure{"the recipient of a message is no mail address"};
    const std::string line(64, '-');
    const auto block =
        fmt::format("\n{0}\nTo: {1}\nSubject: {2}\n\n{3}{0}\n\n", line, mail.to, mail.subject, mail.text);
    // In one call, so that no line of the log falls into it.
    if (std::fwrite(block.data(), 1, block.size(), stdout) != block.size() || std::fflush(stdout) != 0)
        co_return Failure{"a message could not be written to standard output"};
    co_return Result<>();
}
