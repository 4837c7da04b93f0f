#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QObject>
#include <QStringList>

/// The place for status items that a desktop's panel would offer, for tests: takes items and reads them.
class StatusWatcher : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ items)
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ hostRegistered)
    Q_PROPERTY(int ProtocolVersion READ protocolVersion)

public:
    /// Takes the watcher's name on the bus at `address`.
    explicit StatusWatcher(const QString &address);
    ~StatusWatcher() override;

    bool works() const { return m_works; }
    QStringList items() const { return m_items; }
    bool hostRegistered() const { return true; }
    int protocolVersion() const { return 0; }

    /// The heading of the newest item's tool tip: what a panel shows of its state.
    QString toolTip() const;

    /// The labels of the newest item's menu in their order; a separator is "-".
    QStringList menuLabels() const;

    /// Presses the entry with that label, as a panel would.
    bool pressEntry(const QString &label) const;

    /// A left click on the item.
    void activate() const;

public Q_SLOTS:
    Q_SCRIPTABLE void RegisterStatusNotifierItem(const QString &service);
    Q_SCRIPTABLE void RegisterStatusNotifierHost(const QString &) {}

Q_SIGNALS:
    Q_SCRIPTABLE void StatusNotifierItemRegistered(const QString &service);

private:
    struct Entry
    {
        int id;
        QString label;
    };
    QList<Entry> menu() const;

    QDBusConnection m_bus;
    QStringList m_items;
    bool m_works = false;
};
