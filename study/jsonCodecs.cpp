#include "jsonCodecs.h"

#include <limits>
#include <nlohmann/json.hpp>

using namespace Qt::StringLiterals;
using Json = nlohmann::ordered_json;

namespace {

/// Reads the fields of one object and remembers the first thing that was wrong.
class ObjectReader
{
public:
    explicit ObjectReader(const QByteArray &bytes)
        : m_object(Json::parse(bytes.cbegin(), bytes.cend(), nullptr, false))
    {
        if (m_object.is_discarded())
            m_problem = u"not valid JSON"_s;
        else if (!m_object.is_object())
            m_problem = u"not a JSON object"_s;
    }

    bool failed() const { return !m_problem.isEmpty(); }
    Failure failure() const { return {m_problem}; }

    template <typename Value>
    Value required(const char *key)
    {
        const auto found = optional<Value>(key);
        if (!found)
            fail(key, "is missing");
        return found.value_or(Value());
    }

    template <typename Value>
    Value valueOr(const char *key, const Value &fallback)
    {
        return optional<Value>(key).value_or(fallback);
    }

    template <typename Value>
    std::optional<Value> optional(const char *key)
    {
        if (failed())
            return std::nullopt;
        const auto found = m_object.find(key);
        if (found == m_object.end() || found->is_null())
            return std::nullopt;
        const auto value = read(*found, static_cast<Value *>(nullptr));
        if (!value)
            fail(key, "has the wrong type");
        return value;
    }

private:
    static std::optional<qint64> read(const Json &json, qint64 *)
    {
        // A number above the signed range is held unsigned; a negative one is always signed.
        if (!json.is_number_integer())
            return std::nullopt;
        if (json.is_number_unsigned() && json.get<quint64>() > quint64(std::numeric_limits<qint64>::max()))
            return std::nullopt;
        return json.get<qint64>();
    }
    static std::optional<QString> read(const Json &json, QString *)
    {
        return json.is_string() ? std::optional(QString::fromStdString(json.get_ref<const std::string &>()))
                                : std::nullopt;
    }
    static std::optional<QStringList> read(const Json &json, QStringList *)
    {
        if (!json.is_array())
            return std::nullopt;
        QStringList list;
        for (const auto &element : json) {
            const auto text = read(element, static_cast<QString *>(nullptr));
            if (!text)
                return std::nullopt;
            list.append(*text);
        }
        return list;
    }

    void fail(const char *key, const char *what)
    {
        if (!failed())
            m_problem = u"\"%1\" %2"_s.arg(QLatin1StringView(key), QLatin1StringView(what));
    }

    Json m_object;
    QString m_problem;
};

Json listJson(const QStringList &list)
{
    auto array = Json::array();
    for (const auto &entry : list)
        array.push_back(entry.toStdString());
    return array;
}

QByteArray compact(const Json &json)
{
    return QByteArray::fromStdString(json.dump());
}

} // namespace

QByteArray encodeConfig(const QuorvelConfig &config)
{
    Json object;
    object["studyMinutes"] = config.studyMinutes;
    object["breakMinutes"] = config.breakMinutes;
    object["maxIdleSeconds"] = config.maxIdleSeconds;
    object["requiredProofsToUnlock"] = config.requiredProofsToUnlock;
    object["blockedApps"] = listJson(config.blockedApps);
    object["blockedDomains"] = listJson(config.blockedDomains);
    object["allowedStudyDomains"] = listJson(config.allowedStudyDomains);
    object["allowedStudyApps"] = listJson(config.allowedStudyApps);
    object["blocklistPresetVersion"] = config.blocklistPresetVersion;
    return compact(object);
}

Result<QuorvelConfig> decodeConfig(const QByteArray &json)
{
    const auto &defaults = QuorvelConfig::defaults();
    ObjectReader reader(json);
    QuorvelConfig config;
    config.studyMinutes = reader.valueOr("studyMinutes", defaults.studyMinutes);
    config.breakMinutes = reader.valueOr("breakMinutes", defaults.breakMinutes);
    config.maxIdleSeconds = reader.valueOr("maxIdleSeconds", defaults.maxIdleSeconds);
    config.requiredProofsToUnlock = reader.valueOr("requiredProofsToUnlock", defaults.requiredProofsToUnlock);
    config.blockedApps = reader.valueOr("blockedApps", defaults.blockedApps);
    config.blockedDomains = reader.valueOr("blockedDomains", defaults.blockedDomains);
    config.allowedStudyDomains = reader.valueOr("allowedStudyDomains", defaults.allowedStudyDomains);
    config.allowedStudyApps = reader.valueOr("allowedStudyApps", defaults.allowedStudyApps);
    config.blocklistPresetVersion = reader.valueOr("blocklistPresetVersion", qint64{0});
    if (reader.failed())
        return reader.failure();
    return config;
}

QByteArray encodeUserProgress(const UserProgress &progress)
{
    Json object;
    object["totalXP"] = progress.totalXP;
    object["totalFocusSeconds"] = progress.totalFocusSeconds;
    object["totalCompletedSessions"] = progress.totalCompletedSessions;
    object["totalCardProofs"] = progress.totalCardProofs;
    object["currentStreak"] = progress.currentStreak;
    object["longestStreak"] = progress.longestStreak;
    if (progress.lastCompletedStudyDay)
        object["lastCompletedStudyDay"] = progress.lastCompletedStudyDay->toStdString();
    object["earnedTitles"] = listJson(progress.earnedTitles);
    return compact(object);
}

Result<UserProgress> decodeUserProgress(const QByteArray &json)
{
    ObjectReader reader(json);
    UserProgress progress;
    progress.totalXP = reader.required<qint64>("totalXP");
    progress.totalFocusSeconds = reader.required<qint64>("totalFocusSeconds");
    progress.totalCompletedSessions = reader.required<qint64>("totalCompletedSessions");
    progress.totalCardProofs = reader.required<qint64>("totalCardProofs");
    progress.currentStreak = reader.required<qint64>("currentStreak");
    progress.longestStreak = reader.required<qint64>("longestStreak");
    progress.lastCompletedStudyDay = reader.optional<QString>("lastCompletedStudyDay");
    progress.earnedTitles = reader.required<QStringList>("earnedTitles");
    if (reader.failed())
        return reader.failure();
    return progress;
}
