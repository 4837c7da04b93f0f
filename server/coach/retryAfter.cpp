#include "retryAfter.h"

#include "textChecks.h"

#include <algorithm>
#include <charconv>
#include <iomanip>
#include <sstream>
#include <string>

namespace {

std::optional<std::chrono::sys_seconds> dateOf(std::string_view text)
{
    std::tm parts{};
    std::istringstream stream{std::string(text)};
    stream.imbue(std::locale::classic());
    stream >> std::get_time(&parts, "%a, %d %b %Y %H:%M:%S");
    std::string zone;
    if (!(stream >> zone) || zone != "GMT" || stream.peek() != std::istringstream::traits_type::eof())
        return std::nullopt;
    constexpr int firstYear = 1900;
    const std::chrono::year_month_day date{std::chrono::year(parts.tm_year + firstYear),
                                           std::chrono::month(static_cast<unsigned>(parts.tm_mon) + 1),
                                           std::chrono::day(static_cast<unsigned>(parts.tm_mday))};
    if (!date.ok())
        return std::nullopt;
    return std::chrono::sys_days(date) + std::chrono::hours(parts.tm_hour) +
           std::chrono::minutes(parts.tm_min) + std::chrono::seconds(parts.tm_sec);
}

} // namespace

std::optional<std::chrono::seconds> retryAfter(std::string_view header, std::chrono::sys_seconds now)
{
    constexpr std::chrono::seconds longest = std::chrono::days(1);
    const auto text = trimmed(header);
    const bool isNumber = !text.empty() && std::all_of(text.begin(), text.end(), [](char character) {
        return character >= '0' && character <= '9';
    });
    if (isNumber) {
        std::int64_t seconds = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
        return error == std::errc() ? std::min(std::chrono::seconds(seconds), longest) : longest;
    }
    const auto date = dateOf(text);
    if (!date)
        return std::nullopt;
    return std::clamp(*date - now, std::chrono::seconds(0), longest);
}
