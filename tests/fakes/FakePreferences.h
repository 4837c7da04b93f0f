#pragma once

#include "Preferences.h"

#include <map>
#include <vector>

/// A store in memory that remembers every write.
class FakePreferences : public Preferences
{
public:
    struct Write
    {
        QString key;
        std::optional<PreferenceValue> value; ///< none: removed
        Durability durability;

        bool operator==(const Write &) const = default;
    };

    std::map<QString, PreferenceValue> values;
    std::vector<Write> writes;

    Availability availability() const override { return Availability::working(); }
    std::optional<PreferenceValue> value(const QString &key) const override
    {
        const auto found = values.find(key);
        return found == values.end() ? std::nullopt : std::optional(found->second);
    }
    void setValue(const QString &key, const PreferenceValue &value, Durability durability) override
    {
        values[key] = value;
        writes.push_back({key, value, durability});
    }
    void remove(const QString &key) override
    {
        values.erase(key);
        writes.push_back({key, std::nullopt, Durability::AtOnce});
    }
};
