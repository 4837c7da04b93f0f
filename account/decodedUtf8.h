#pragma once

#include <QByteArray>
#include <QString>
#include <QStringDecoder>

#include <optional>

/// The text that bytes are, whole: also a byte order mark at its start belongs to it. None where they are not
/// UTF-8, also where a character is cut off at the end.
inline std::optional<QString> decodedUtf8(const QByteArray &bytes)
{
    // Stateless: else a character that is cut off waits for its rest and is no error.
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    QString text = decoder(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}
