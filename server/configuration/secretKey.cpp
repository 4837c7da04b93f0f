#include "secretKey.h"

#include "secrets.h"
#include "textChecks.h"

#include <boost/algorithm/hex.hpp>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::size_t keyBytes = 32;

Failure failed(const std::string &what, const std::string &path)
{
    return {what + " " + path + ": " + std::strerror(errno) + "."};
}

Result<> writeWhole(const std::string &path, const std::string &bytes)
{
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file < 0)
        return failed("Cannot make", path);
    const auto written = write(file, bytes.data(), bytes.size());
    const bool isWhole = written == static_cast<ssize_t>(bytes.size()) && fsync(file) == 0;
    const auto failure = isWhole ? Failure() : failed("Cannot write", path);
    close(file);
    return isWhole ? Result<>() : Result<>(failure);
}

} // namespace

std::optional<std::string> secretKeyFrom(std::string_view digits)
{
    std::string bytes;
    try {
        boost::algorithm::unhex(digits.begin(), digits.end(), std::back_inserter(bytes));
    } catch (const boost::algorithm::hex_decode_error &) {
        return std::nullopt;
    }
    return bytes.size() == keyBytes ? std::optional(bytes) : std::nullopt;
}

Result<std::string> keptSecretKey(const std::string &path)
{
    // A whole file appears under its name at once, and only one of two that try at the same time wins.
    if (access(path.c_str(), F_OK) != 0) {
        const auto draft = path + "." + hexOf(randomBytes(8));
        if (const auto written = writeWhole(draft, hexOf(randomBytes(keyBytes)) + "\n"); !written)
            return written.error();
        const bool isLinked = link(draft.c_str(), path.c_str()) == 0 || errno == EEXIST;
        const auto failure = isLinked ? Failure() : failed("Cannot make", path);
        unlink(draft.c_str());
        if (!isLinked)
            return failure;
    }
    std::ifstream file(path);
    std::string line;
    if (!std::getline(file, line))
        return Failure{"Cannot read the service's key in " + path + "."};
    const auto key = secretKeyFrom(trimmed(line));
    if (!key)
        return Failure{"The service's key in " + path + " is not 64 hexadecimal digits."};
    return Result<std::string>(boost::system::in_place_value, *key);
}
