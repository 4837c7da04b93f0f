#include "Language.h"

#include <boost/algorithm/string/case_conv.hpp>
#include <boost/algorithm/string/trim.hpp>
#include <charconv>
#include <string>

namespace {

/// The weight in "q=0.8"; 1 where there is none, 0 where it is no number between 0 and 1.
double weightOf(std::string_view parameter)
{
    const auto value = boost::trim_copy(std::string(parameter));
    if (value.empty())
        return 1;
    if (!value.starts_with("q="))
        return 0;
    double weight = 0;
    const auto *const last = value.data() + value.size();
    const auto [end, error] = std::from_chars(value.data() + 2, last, weight);
    return error == std::errc() && end == last && weight >= 0 && weight <= 1 ? weight : 0;
}

} // namespace

std::string_view codeOf(Language language)
{
    return language == Language::Russian ? "ru" : "en";
}

std::optional<Language> languageOf(std::string_view code)
{
    if (code == "en")
        return Language::English;
    if (code == "ru")
        return Language::Russian;
    return std::nullopt;
}

Language preferredLanguage(std::string_view acceptLanguage)
{
    auto preferred = Language::English;
    double best = 0;
    while (!acceptLanguage.empty()) {
        const auto comma = acceptLanguage.find(',');
        const auto item = acceptLanguage.substr(0, comma);
        acceptLanguage = comma == std::string_view::npos ? "" : acceptLanguage.substr(comma + 1);
        const auto semicolon = item.find(';');
        auto range = boost::to_lower_copy(boost::trim_copy(std::string(item.substr(0, semicolon))));
        range.resize(std::min(range.size(), range.find('-')));
        const double weight = weightOf(semicolon == std::string_view::npos ? "" : item.substr(semicolon + 1));
        if (const auto language = languageOf(range); language && weight > best) {
            preferred = *language;
            best = weight;
        }
    }
    return preferred;
}
