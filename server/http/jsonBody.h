#pragma once

#include <boost/json/object.hpp>
#include <cstddef>
#include <optional>
#include <string_view>

/// The one JSON object that a body is, by the letter of RFC 8259: UTF-8, no comments, nothing behind it. None
/// where it is anything else, larger than `largest` bytes or deeper than eight levels. Of a name that stands
/// in it twice the last counts.
std::optional<boost::json::object> jsonObject(std::string_view body, std::size_t largest = 64 * 1024);

/// The text of that name, which lives as long as the object; none where there is none or it is no text.
std::optional<std::string_view> textOf(const boost::json::object &object, std::string_view name);
