#pragma once

#include "Availability.h"

#include <QString>

#include <optional>
#include <variant>

using PreferenceValue = std::variant<bool, qint64, QString>;

/// When a preference must have reached the disk.
enum class Durability {
    AtOnce, ///< before the call returns: survives a power cut
    Soon,   ///< survives the end of this process at once, a power cut within a minute; costs no sync and no
            ///< lock
};

/// The user's own key-value store. A write that fails is logged, not reported: no caller waits for it.
class Preferences
{
public:
    virtual ~Preferences() = default;

    virtual Availability availability() const = 0;
    virtual std::optional<PreferenceValue> value(const QString &key) const = 0;
    virtual void setValue(const QString &key, const PreferenceValue &value, Durability durability) = 0;
    virtual void remove(const QString &key) = 0; ///< durable when it returns

    /// The value under `key` where it has the asked type; an absent key or another type reads as none.
    template <typename Type>
    std::optional<Type> get(const QString &key) const
    {
        const auto found = value(key);
        if (found && std::holds_alternative<Type>(*found))
            return std::get<Type>(*found);
        return std::nullopt;
    }
};
