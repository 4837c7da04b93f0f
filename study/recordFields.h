#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QUuid>

#include <array>
#include <optional>
#include <string_view>
#include <variant>

enum class Presence {
    Required, ///< a record without it, or with null in its place, cannot be read
    Optional, ///< without it, or with null in its place, the record keeps the value it starts with
};

/// One field of a record and its key in the file. What a std::optional has not is left out of the file.
template <typename Record>
struct RecordField
{
    using Member = std::variant<qint64 Record::*, QString Record::*, QStringList Record::*, QUuid Record::*,
                                QDateTime Record::*, std::optional<QString> Record::*,
                                std::optional<QUuid> Record::*, std::optional<QDateTime> Record::*>;

    std::string_view key; ///< plain ASCII, nothing in it to escape
    Member member;
    Presence presence;
};

/// The fields of a record in the order of the keys in its file.
template <typename Record, std::size_t count>
using RecordFields = std::array<RecordField<Record>, count>;
