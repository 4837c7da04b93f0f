#pragma once

#include "MotionPreference.h"

#include <QDBusConnection>
#include <QMap>
#include <QObject>
#include <QVariant>

class QDBusVariant;

/// The preference as the desktop portal's settings have it, from which also a program in a sandbox can read.
/// Three settings say it, by the desktop: reduced-motion of org.freedesktop.appearance, enable-animations of
/// GNOME and AnimationDurationFactor of KDE. One that asks for less movement is enough.
///
/// Everything is read without waiting. A desktop without a portal leaves the preference unknown; a portal
/// that comes later, or comes back, is read then.
class PortalMotion : public QObject, public MotionPreference
{
    Q_OBJECT

public:
    explicit PortalMotion(const QDBusConnection &bus, QObject *parent = nullptr);

    Motion motion() const override { return m_motion; }
    void whenChanged(std::function<void()> changed) override { m_changed = std::move(changed); }

private:
    Q_SLOT void settingChanged(const QString &space, const QString &key, const QDBusVariant &value);

    void readAll();
    void take(const QMap<QString, QVariantMap> &settings);
    void update();

    QDBusConnection m_bus;
    QMap<QString, QVariantMap> m_settings; ///< by namespace and key; only those that are looked at
    Motion m_motion = Motion::Unknown;
    std::function<void()> m_changed;
};
