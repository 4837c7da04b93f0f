#include "QmlWarnings.h"

#include <QMutex>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

QMutex guard; // messages come from any thread
QStringList kept;
QtMessageHandler previous = nullptr;

void keep(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    static const QRegularExpression place(u"\\.qml:\\d+"_s);
    if (type != QtDebugMsg && type != QtInfoMsg && text.contains(place)) {
        const QMutexLocker locker(&guard);
        kept.append(text);
    }
    previous(type, context, text);
}

} // namespace

QmlWarnings::QmlWarnings()
{
    previous = qInstallMessageHandler(keep);
}

QmlWarnings::~QmlWarnings()
{
    qInstallMessageHandler(previous);
}

QStringList QmlWarnings::take()
{
    const QMutexLocker locker(&guard);
    return std::exchange(kept, {});
}
