#pragma once

#include <QLoggingCategory>
#include <QStringList>

/// Keeps the warnings of one category from the log, from begin() on while it lives; one at a time.
class KeptWarnings
{
public:
    KeptWarnings() = default;
    ~KeptWarnings()
    {
        if (s_earlier)
            qInstallMessageHandler(s_earlier);
    }
    Q_DISABLE_COPY_MOVE(KeptWarnings)

    /// To be called in initTestCase(): Qt Test has its own handler only then.
    void begin(const char *category)
    {
        s_category = category;
        s_earlier = qInstallMessageHandler(keep);
    }

    QStringList &texts() { return s_texts; }

private:
    static void keep(QtMsgType type, const QMessageLogContext &context, const QString &text)
    {
        if (type == QtWarningMsg && qstrcmp(context.category, s_category) == 0)
            s_texts.append(text);
        else
            s_earlier(type, context, text);
    }

    static inline const char *s_category = nullptr;
    static inline QtMessageHandler s_earlier = nullptr;
    static inline QStringList s_texts;
};
