#include "StatusWatcher.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusVariant>

using namespace Qt::StringLiterals;

namespace {

constexpr auto itemPath = "/StatusNotifierItem"_L1;
constexpr auto menuPath = "/MenuBar"_L1;
constexpr auto itemInterface = "org.kde.StatusNotifierItem"_L1;
constexpr auto menuInterface = "com.canonical.dbusmenu"_L1;

QDBusMessage toItem(const QString &service, const QString &path, const QString &interface,
                    const QString &method, const QVariantList &arguments)
{
    auto message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    return message;
}

/// A name of its own each time: a connection goes only some time after it was told to, and the next one under
/// its name would be the dying one.
QString newConnectionName()
{
    static int count = 0;
    return u"status watcher %1"_s.arg(++count);
}

} // namespace

StatusWatcher::StatusWatcher(const QString &address)
    : m_bus(QDBusConnection::connectToBus(address, newConnectionName()))
{
    m_works = m_bus.isConnected() &&
              m_bus.registerObject(u"/StatusNotifierWatcher"_s, this,
                                   QDBusConnection::ExportScriptableContents |
                                       QDBusConnection::ExportAllProperties) &&
              m_bus.registerService(u"org.kde.StatusNotifierWatcher"_s);
}

StatusWatcher::~StatusWatcher()
{
    QDBusConnection::disconnectFromBus(m_bus.name());
}

void StatusWatcher::RegisterStatusNotifierItem(const QString &service)
{
    m_items.append(service.startsWith(u'/') ? message().service() : service);
    Q_EMIT StatusNotifierItemRegistered(m_items.last());
}

QString StatusWatcher::toolTip() const
{
    if (m_items.isEmpty())
        return {};
    const auto reply = m_bus.call(toItem(m_items.last(), itemPath, u"org.freedesktop.DBus.Properties"_s,
                                         u"Get"_s, {QString(itemInterface), u"ToolTip"_s}),
                                  QDBus::BlockWithGui, 3000);
    if (reply.arguments().isEmpty())
        return {};
    // (sa(iiay)ss): icon name, icon pictures, heading, text
    const auto toolTip = reply.arguments().at(0).value<QDBusVariant>().variant().value<QDBusArgument>();
    QString iconName;
    QString heading;
    toolTip.beginStructure();
    toolTip >> iconName;
    toolTip.beginArray();
    toolTip.endArray();
    toolTip >> heading;
    return heading;
}

QList<StatusWatcher::Entry> StatusWatcher::menu() const
{
    QList<Entry> entries;
    if (m_items.isEmpty())
        return entries;
    const auto reply =
        m_bus.call(toItem(m_items.last(), menuPath, menuInterface, u"GetLayout"_s, {0, -1, QStringList()}),
                   QDBus::BlockWithGui, 3000);
    if (reply.arguments().size() < 2)
        return entries;
    // The root: its number, its properties, and its children, each in a variant of the same shape.
    const auto root = reply.arguments().at(1).value<QDBusArgument>();
    int id = 0;
    QVariantMap properties;
    root.beginStructure();
    root >> id >> properties;
    root.beginArray();
    while (!root.atEnd()) {
        QDBusVariant wrapped;
        root >> wrapped;
        const auto child = wrapped.variant().value<QDBusArgument>();
        child.beginStructure();
        child >> id >> properties;
        const bool separator = properties.value(u"type"_s).toString() == u"separator";
        entries.append({id, separator ? u"-"_s : properties.value(u"label"_s).toString().remove(u'_')});
    }
    return entries;
}

QStringList StatusWatcher::menuLabels() const
{
    QStringList labels;
    for (const auto &entry : menu())
        labels.append(entry.label);
    return labels;
}

bool StatusWatcher::pressEntry(const QString &label) const
{
    for (const auto &entry : menu()) {
        if (entry.label != label)
            continue;
        m_bus.send(toItem(m_items.last(), menuPath, menuInterface, u"Event"_s,
                          {entry.id, u"clicked"_s, QVariant::fromValue(QDBusVariant(QString())), 0U}));
        return true;
    }
    return false;
}

void StatusWatcher::activate() const
{
    m_bus.send(toItem(m_items.last(), itemPath, itemInterface, u"Activate"_s, {0, 0}));
}
