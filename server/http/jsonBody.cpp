#include "jsonBody.h"

#include <boost/json/parse.hpp>
#include <boost/json/parse_options.hpp>
#include <boost/json/value.hpp>
#include <boost/system/error_code.hpp>

std::optional<boost::json::object> jsonObject(std::string_view body, std::size_t largest)
{
    if (body.size() > largest)
        return std::nullopt;
    boost::json::parse_options options; // the rest of them is strict already
    options.max_depth = 8;
    boost::system::error_code error;
    auto value = boost::json::parse(body, error, {}, options);
    if (error || !value.is_object())
        return std::nullopt;
    return std::move(value.get_object());
}

std::optional<std::string_view> textOf(const boost::json::object &object, std::string_view name)
{
    const auto *const value = object.if_contains(name);
    const auto *const text = value ? value->if_string() : nullptr;
    if (!text)
        return std::nullopt;
    return std::string_view(text->data(), text->size());
}
