#include "urlText.h"

#include "percentEncoded.h"
#include "textChecks.h"

#include <algorithm>
#include <charconv>
#include <spdlog/fmt/fmt.h>

namespace {

std::optional<std::string> decoded(std::string_view text)
{
    std::string plain;
    for (std::size_t place = 0; place < text.size(); ++place) {
        if (text[place] != '%') {
            plain += text[place] == '+' ? ' ' : text[place];
            continue;
        }
        if (text.size() - place < 3)
            return std::nullopt;
        unsigned char byte = 0;
        const auto *const end = text.data() + place + 3;
        if (const auto read = std::from_chars(text.data() + place + 1, end, byte, 16);
            read.ec != std::errc() || read.ptr != end)
            return std::nullopt;
        plain += static_cast<char>(byte);
        place += 2;
    }
    if (hasControlCharacters(plain)) // and where it is not UTF-8
        return std::nullopt;
    return plain;
}

} // namespace

std::string formText(std::initializer_list<std::pair<std::string_view, std::string_view>> fields)
{
    std::string form;
    for (const auto &[name, value] : fields)
        form += fmt::format("{}{}={}", form.empty() ? "" : "&", percentEncoded(name), percentEncoded(value));
    return form;
}

std::string withQuery(std::string_view address, std::string_view query)
{
    return fmt::format("{}{}{}", address, address.find('?') == std::string_view::npos ? '?' : '&', query);
}

std::optional<std::vector<std::pair<std::string, std::string>>> queryFields(std::string_view query)
{
    std::vector<std::pair<std::string, std::string>> fields;
    while (!query.empty()) {
        const auto field = query.substr(0, query.find('&'));
        query.remove_prefix(std::min(query.size(), field.size() + 1));
        if (field.empty())
            continue;
        const auto equals = std::min(field.find('='), field.size());
        auto name = decoded(field.substr(0, equals));
        auto value = decoded(field.substr(std::min(equals + 1, field.size())));
        if (!name || !value || std::any_of(fields.begin(), fields.end(), [&](const auto &other) {
                return other.first == *name;
            }))
            return std::nullopt;
        fields.emplace_back(*std::move(name), *std::move(value));
    }
    return fields;
}
