#pragma once

#include "Result.h"
#include "recordFields.h"
#include "recordText.h"

#include <QByteArray>
#include <QLatin1StringView>

#include <bitset>
#include <deque>
#include <limits>
#include <nlohmann/json.hpp>

enum class RecordsAre {
    One,  ///< the text is one object
    List, ///< the text is an array of objects
};

/// Takes the events of the JSON library's parser and makes records of them, in one pass and without a tree of
/// the whole. The parser keeps its own stack, so that no depth of nesting ends the program. Each event
/// returns whether to go on.
template <typename Record, std::size_t count>
class RecordEvents
{
public:
    /// `start` is what a record is before its keys are read.
    RecordEvents(const RecordFields<Record, count> &fields, const Record &start, RecordsAre records)
        : m_fields(fields)
        , m_start(start)
        , m_place(records == RecordsAre::List ? Place::List : Place::Start)
    {}

    std::deque<Record> &records() { return m_records; }
    QString problem() const { return m_problem; }

    bool null()
    {
        if (m_place != Place::Value)
            return scalar([](auto &) { return false; });
        m_seen.reset(m_field);
        std::visit([this](auto member) { m_records.back().*member = m_start.*member; },
                   m_fields[m_field].member);
        m_place = Place::Keys;
        return true;
    }
    bool boolean(bool)
    {
        return scalar([](auto &) { return false; });
    }
    bool number_integer(std::int64_t number) // NOLINT(readability-identifier-naming): the library's
    {
        return scalar([number](auto &member) { return assign(member, qint64(number)); });
    }
    bool number_unsigned(std::uint64_t number) // NOLINT(readability-identifier-naming): the library's
    {
        // The parser gives every number without a minus here.
        if (number > std::uint64_t(std::numeric_limits<qint64>::max()))
            return scalar([](auto &) { return false; });
        return number_integer(std::int64_t(number));
    }
    bool number_float(double, const std::string &) // NOLINT(readability-identifier-naming): the library's
    {
        return scalar([](auto &) { return false; });
    }
    bool string(const std::string &text)
    {
        if (m_place == Place::Texts) {
            textsOfField()->append(readRecordString(text));
            return true;
        }
        return scalar([&text](auto &member) { return assign(member, std::string_view(text)); });
    }
    bool binary(const std::vector<std::uint8_t> &) { return false; } // no such thing in a text

    bool start_object(std::size_t) // NOLINT(readability-identifier-naming): the library's
    {
        if (m_place == Place::Skipped) {
            ++m_skippedDepth;
            return true;
        }
        if (m_place != Place::Start)
            return wrongType();
        m_records.push_back(m_start);
        m_seen.reset();
        m_field = count - 1;
        m_place = Place::Keys;
        return true;
    }
    bool key(const std::string &name)
    {
        if (m_place == Place::Skipped)
            return true;
        // Files that this program wrote have the keys in the order of the fields.
        for (std::size_t tried = 0; tried < count; ++tried) {
            m_field = m_field + 1 == count ? 0 : m_field + 1;
            if (m_fields[m_field].key == name) {
                m_place = Place::Value;
                return true;
            }
        }
        m_place = Place::Skipped;
        m_skippedDepth = 0;
        return true;
    }
    bool end_object() // NOLINT(readability-identifier-naming): the library's
    {
        if (m_place == Place::Skipped)
            return endSkipped();
        for (std::size_t field = 0; field < count; ++field) {
            if (m_fields[field].presence == Presence::Required && !m_seen.test(field))
                return fail(field, "is missing");
        }
        m_place = Place::Start;
        return true;
    }

    bool start_array(std::size_t) // NOLINT(readability-identifier-naming): the library's
    {
        if (m_place == Place::Skipped) {
            ++m_skippedDepth;
            return true;
        }
        if (m_place == Place::List) {
            m_place = Place::Start;
            return true;
        }
        if (m_place != Place::Value || !textsOfField())
            return wrongType();
        textsOfField()->clear();
        m_place = Place::Texts;
        return true;
    }
    bool end_array() // NOLINT(readability-identifier-naming): the library's
    {
        if (m_place == Place::Skipped)
            return endSkipped();
        if (m_place == Place::Texts)
            fieldIsRead();
        return true;
    }

    bool parse_error(std::size_t, const std::string &, // NOLINT(readability-identifier-naming): the library's
                     const nlohmann::detail::exception &)
    {
        m_problem = QStringLiteral("not valid JSON");
        return false;
    }

private:
    enum class Place {
        List,    ///< before the array of records
        Start,   ///< before a record, or after the last
        Keys,    ///< in a record, before a key
        Value,   ///< in a record, before the value of `m_field`
        Texts,   ///< in the array of texts that is that value
        Skipped, ///< in the value of an unknown key
    };

    static bool assign(qint64 &member, qint64 number)
    {
        member = number;
        return true;
    }
    static bool assign(QString &member, std::string_view text)
    {
        member = readRecordString(text);
        return true;
    }
    static bool assign(QUuid &member, std::string_view text)
    {
        const auto id = readRecordId(text);
        member = id.value_or(QUuid());
        return id.has_value();
    }
    static bool assign(QDateTime &member, std::string_view text)
    {
        const auto time = readRecordTime(text);
        member = time.value_or(QDateTime());
        return time.has_value();
    }
    template <typename Member>
    static bool assign(std::optional<Member> &member, std::string_view text)
    {
        return assign(member.emplace(), text);
    }
    /// Whatever else does not fit together.
    template <typename Member, typename Value>
    static bool assign(Member &, Value)
    {
        return false;
    }

    template <typename Assign>
    bool scalar(Assign assignTo)
    {
        if (m_place == Place::Skipped) {
            if (m_skippedDepth == 0)
                m_place = Place::Keys;
            return true;
        }
        if (m_place != Place::Value)
            return wrongType();
        Record &record = m_records.back();
        if (!std::visit([&](auto member) { return assignTo(record.*member); }, m_fields[m_field].member))
            return wrongType();
        fieldIsRead();
        return true;
    }

    QStringList *textsOfField()
    {
        const auto *member = std::get_if<QStringList Record::*>(&m_fields[m_field].member);
        return member ? &(m_records.back().**member) : nullptr;
    }

    void fieldIsRead()
    {
        m_seen.set(m_field);
        m_place = Place::Keys;
    }

    bool endSkipped()
    {
        if (--m_skippedDepth == 0)
            m_place = Place::Keys;
        return true;
    }

    bool wrongType()
    {
        if (m_place == Place::List)
            m_problem = QStringLiteral("not a JSON array");
        else if (m_place == Place::Start)
            m_problem = QStringLiteral("not a JSON object");
        else
            fail(m_field, "has a wrong value");
        return false;
    }

    bool fail(std::size_t field, const char *what)
    {
        const auto key = m_fields[field].key;
        m_problem = QStringLiteral("\"%1\" of record %2 %3")
                        .arg(QLatin1StringView(key.data(), qsizetype(key.size())))
                        .arg(m_records.size())
                        .arg(QLatin1StringView(what));
        return false;
    }

    const RecordFields<Record, count> &m_fields;
    const Record &m_start;
    Place m_place;
    std::size_t m_field = 0;
    std::size_t m_skippedDepth = 0;
    std::bitset<count> m_seen;
    std::deque<Record> m_records;
    QString m_problem;
};

/// Reads JSON text, to its end. A value of an unknown key is passed over. Of a key that comes twice the last
/// value counts, and each has to be of the right type. A byte order mark at the start is no mistake.
template <typename Record, std::size_t count>
Result<std::deque<Record>> readRecords(const QByteArray &json, const RecordFields<Record, count> &fields,
                                       const std::type_identity_t<Record> &start, RecordsAre are)
{
    if (json.contains('\0')) // the parser would take it for the end
        return Failure{QStringLiteral("a NUL byte is in it")};
    RecordEvents<Record, count> events(fields, start, are);
    if (!nlohmann::json::sax_parse(json.cbegin(), json.cend(), &events))
        return Failure{events.problem()};
    return std::move(events.records());
}
