#pragma once

#include "AIStudySuggestion.h"

#include <QJsonArray>
#include <QJsonObject>

/// A suggestion as the backend answers it.
inline QJsonObject toJson(const AIStudySuggestion &suggestion)
{
    using namespace Qt::StringLiterals;
    QJsonArray cards;
    for (const auto &card : suggestion.cards)
        cards.append(
            QJsonObject{{u"topic"_s, card.topic}, {u"prompt"_s, card.prompt}, {u"answer"_s, card.answer}});
    return {{u"message"_s, suggestion.message},
            {u"tasks"_s, QJsonArray::fromStringList(suggestion.tasks)},
            {u"cards"_s, cards}};
}
