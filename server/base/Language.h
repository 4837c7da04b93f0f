#pragma once

#include <optional>
#include <string_view>

/// The languages that a user can be answered in.
enum class Language { English, Russian };

/// "en" or "ru", as the desktop program writes them.
std::string_view codeOf(Language language);

/// The language of exactly that code.
std::optional<Language> languageOf(std::string_view code);

/// The first of our languages in a header of the form "ru-RU, ru;q=0.9, en;q=0.8", by its weights; English
/// where it has none, is empty or makes no sense.
Language preferredLanguage(std::string_view acceptLanguage);

/// A text in every language.
struct LocalText
{
    std::string_view english;
    std::string_view russian;

    constexpr std::string_view in(Language language) const
    {
        return language == Language::Russian ? russian : english;
    }
};
