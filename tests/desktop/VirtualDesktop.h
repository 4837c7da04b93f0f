#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include <memory>

/// A desktop of its own for one test: an X server, a window manager, a session bus and empty folders for
/// home, configuration, data and runtime files. Everything ends with the object.
class VirtualDesktop
{
public:
    VirtualDesktop();
    ~VirtualDesktop();
    Q_DISABLE_COPY_MOVE(VirtualDesktop)

    bool works() const { return m_works; }

    /// What programs of this desktop get to see.
    const QProcessEnvironment &environment() const { return m_environment; }
    QString busAddress() const { return m_environment.value(QStringLiteral("DBUS_SESSION_BUS_ADDRESS")); }

    QString filePath(const QString &name) const { return m_folder.filePath(name); }

    /// Runs a tool of the desktop to its end and gives what it printed, without the last line end.
    QString run(const QString &program, const QStringList &arguments) const;

    QProcess &server() { return m_server; } ///< for a test that takes it away
    QProcess &bus() { return m_bus; }

    /// What is to be seen on it, for a test that failed.
    QString report() const;

private:
    bool startServer();
    bool startBus();

    QTemporaryDir m_folder;
    QProcessEnvironment m_environment;
    QProcess m_server;
    QProcess m_manager;
    QProcess m_bus;
    bool m_works = false;
};
