#include "PortalMotion.h"

#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QLoggingCategory>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

Q_LOGGING_CATEGORY(lcMotion, "quorvel.platform.motion")

namespace {

constexpr auto portal = "org.freedesktop.portal.Desktop"_L1;
constexpr auto portalPath = "/org/freedesktop/portal/desktop"_L1;
constexpr auto settingsInterface = "org.freedesktop.portal.Settings"_L1;

using Motion = MotionPreference::Motion;

/// One setting by which a desktop tells the preference.
struct MotionSetting
{
    QLatin1StringView space;
    QLatin1StringView key;
    Motion (*meaning)(const QVariant &value);
};

Motion ofReducedMotion(const QVariant &value)
{
    bool isNumber = false;
    const auto preference = value.toUInt(&isNumber);
    if (!isNumber)
        return Motion::Unknown;
    return preference == 1 ? Motion::Reduced : Motion::Full; // what has no name yet counts as no preference
}

Motion ofEnableAnimations(const QVariant &value)
{
    if (value.typeId() != QMetaType::Bool)
        return Motion::Unknown;
    return value.toBool() ? Motion::Full : Motion::Reduced;
}

/// KDE hands out its settings as the texts of their file.
Motion ofDurationFactor(const QVariant &value)
{
    bool isNumber = false;
    const double factor = value.toDouble(&isNumber);
    if (!isNumber)
        return Motion::Unknown;
    return factor > 0 ? Motion::Full : Motion::Reduced;
}

constexpr std::array motionSettings{
    MotionSetting{"org.freedesktop.appearance"_L1, "reduced-motion"_L1, ofReducedMotion},
    MotionSetting{"org.gnome.desktop.interface"_L1, "enable-animations"_L1, ofEnableAnimations},
    MotionSetting{"org.kde.kdeglobals.KDE"_L1, "AnimationDurationFactor"_L1, ofDurationFactor},
};

} // namespace

PortalMotion::PortalMotion(const QDBusConnection &bus, QObject *parent)
    : QObject(parent)
    , m_bus(bus)
{
    qDBusRegisterMetaType<QMap<QString, QVariantMap>>();
    if (!m_bus.isConnected())
        return;
    m_bus.connect(portal, portalPath, settingsInterface, u"SettingChanged"_s, this,
                  SLOT(settingChanged(QString, QString, QDBusVariant)));
    auto *comings = new QDBusServiceWatcher(portal, m_bus, QDBusServiceWatcher::WatchForRegistration, this);
    connect(comings, &QDBusServiceWatcher::serviceRegistered, this, &PortalMotion::readAll);
    readAll();
}

void PortalMotion::readAll()
{
    QStringList spaces;
    for (const auto &setting : motionSettings)
        spaces.append(setting.space);
    auto question = QDBusMessage::createMethodCall(portal, portalPath, settingsInterface, u"ReadAll"_s);
    question.setArguments({spaces});
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(question), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher *finished) {
        finished->deleteLater();
        const QDBusPendingReply<QMap<QString, QVariantMap>> reply = *finished;
        if (reply.isError())
            qCDebug(lcMotion).noquote() << "no settings of a portal:" << reply.error().message();
        else
            take(reply.value());
    });
}

void PortalMotion::take(const QMap<QString, QVariantMap> &settings)
{
    m_settings.clear();
    for (const auto &setting : motionSettings) {
        const auto value = settings.value(setting.space).value(setting.key);
        if (value.isValid())
            m_settings[setting.space][setting.key] = value;
    }
    update();
}

void PortalMotion::settingChanged(const QString &space, const QString &key, const QDBusVariant &value)
{
    const bool wanted = std::any_of(motionSettings.begin(), motionSettings.end(), [&](const auto &setting) {
        return setting.space == space && setting.key == key;
    });
    if (!wanted)
        return;
    m_settings[space][key] = value.variant();
    update();
}

void PortalMotion::update()
{
    auto motion = Motion::Unknown;
    for (const auto &setting : motionSettings) {
        const auto value = m_settings.value(setting.space).value(setting.key);
        if (value.isValid())
            motion = std::max(motion, setting.meaning(value)); // reduced before full before unknown
    }
    if (motion == m_motion)
        return;
    m_motion = motion;
    if (m_changed)
        m_changed();
}
