#pragma once

#include <QFile>
#include <QTemporaryDir>

/// A program that stands in for osascript: keeps the arguments it is called with and then plays some lines of
/// shell. Its folder, with a space in the name, goes with the object.
class StandInProgram
{
public:
    explicit StandInProgram(const QByteArray &lines = {})
    {
        QFile file(path());
        const QByteArray keeping = "#!/bin/sh\nprintf '%s\\0' \"$@\" >>\"$0.calls\"\n";
        m_works = file.open(QIODevice::WriteOnly) && file.write(keeping + lines + '\n') > 0 &&
                  file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    bool works() const { return m_works; }
    QString path() const { return m_folder.filePath(QStringLiteral("os script")); }

    /// All arguments of all calls, in their order.
    QStringList arguments() const
    {
        QFile file(path() + QStringLiteral(".calls"));
        if (!file.open(QIODevice::ReadOnly))
            return {};
        auto words = QString::fromUtf8(file.readAll()).split(QChar(u'\0'));
        words.removeLast(); // each ends with a zero
        return words;
    }

private:
    QTemporaryDir m_folder;
    bool m_works = false;
};
