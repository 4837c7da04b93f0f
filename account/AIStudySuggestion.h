#pragma once

#include "AppLanguage.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

/// A recall card that the coach suggests.
struct AICardSuggestion
{
    QString topic; ///< may be empty
    QString prompt;
    QString answer; ///< alternatives are separated by "|"

    bool operator==(const AICardSuggestion &) const = default;
};

/// What the coach makes of a topic.
struct AIStudySuggestion
{
    QString message;
    QStringList tasks; ///< titles, in the suggested order
    std::vector<AICardSuggestion> cards;

    bool operator==(const AIStudySuggestion &) const = default;

    /// The pack that needs no server. An empty topic becomes "your exam topic" or its Russian words.
    static AIStudySuggestion fallback(const QString &topic, AppLanguage language);
};

/// The suggestion that an object holds; none where a key is missing or has the wrong type. Unknown keys are
/// passed over.
std::optional<AIStudySuggestion> suggestionFrom(const QJsonObject &object);
