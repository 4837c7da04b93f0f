#pragma once

#include "recordFields.h"

#include <QByteArray>

/// Writes records as compact JSON. A surrogate without its other half is written as U+FFFD, so that the
/// result is always UTF-8.
class RecordWriter
{
public:
    template <typename Record, std::size_t count>
    void writeRecord(const Record &record, const RecordFields<Record, count> &fields)
    {
        writeByte('{');
        m_firstKey = true;
        for (const auto &field : fields)
            std::visit([&](auto member) { writeField(field.key, record.*member); }, field.member);
        writeByte('}');
    }

    template <typename Records, typename Record, std::size_t count>
    void writeRecords(const Records &records, const RecordFields<Record, count> &fields)
    {
        writeByte('[');
        bool first = true;
        for (const Record &record : records) {
            if (!first)
                writeByte(',');
            first = false;
            writeRecord(record, fields);
        }
        writeByte(']');
    }

    /// What was written. The writer is empty then.
    QByteArray take();

private:
    template <typename Value>
    void writeField(std::string_view key, const Value &value)
    {
        writeKey(key);
        writeValue(value);
    }
    template <typename Value>
    void writeField(std::string_view key, const std::optional<Value> &value)
    {
        if (value)
            writeField(key, *value);
    }

    void writeByte(char byte);
    void writeKey(std::string_view key);
    void writeValue(qint64 number);
    void writeValue(const QString &text);
    void writeValue(const QStringList &list);
    void writeValue(const QUuid &id);
    void writeValue(const QDateTime &time);

    char *roomFor(qsizetype most);
    void writtenTo(const char *end);

    QByteArray m_bytes; ///< longer than what was written
    qsizetype m_length = 0;
    bool m_firstKey = true;
};
