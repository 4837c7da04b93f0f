#include "Suggestion.h"

#include <boost/json.hpp>

namespace json = boost::json;

std::string jsonOf(const Suggestion &suggestion)
{
    json::array cards;
    for (const auto &card : suggestion.cards)
        cards.push_back(
            json::object{{"topic", card.topic}, {"prompt", card.prompt}, {"answer", card.answer}});
    return json::serialize(
        json::object{{"message", suggestion.message},
                     {"tasks", json::array(suggestion.tasks.begin(), suggestion.tasks.end())},
                     {"cards", std::move(cards)}});
}
