#include "AppDelegate.h"
#include "DataFolderLock.h"
#include "InstanceFolder.h"
#include "SingleInstance.h"
#include "TerminationSignals.h"
#include "baseFolders.h"

#include <QApplication>
#include <QIcon>
#include <QLoggingCategory>
#include <QMessageBox>
#include <QtQml/qqmlextensionplugin.h>

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

using namespace Qt::StringLiterals;

Q_IMPORT_QML_PLUGIN(Quorvel_UiPlugin)

Q_LOGGING_CATEGORY(lcMain, "quorvel.app")

namespace {

QStringList argumentsOf(int count, char **values)
{
    QStringList arguments;
    for (int index = 1; index < count; ++index)
        arguments.append(QString::fromLocal8Bit(values[index]));
    return arguments;
}

/// Says why the program cannot run, on the terminal and, where there is a desktop, in a dialog.
int giveUp(int &argc, char **argv, const QString &reason)
{
    fprintf(stderr, "quorvel: %s\n", qPrintable(reason));
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return 1;
    QApplication application(argc, argv);
    QApplication::setApplicationDisplayName(u"Quorvel"_s);
    TerminationSignals signalsOfTheSystem;
    QObject::connect(&signalsOfTheSystem, &TerminationSignals::asked, &application,
                     [] { QCoreApplication::exit(1); });
    QMessageBox dialog(QMessageBox::Critical, u"Quorvel"_s, reason);
    dialog.exec();
    return 1;
}

/// Qt and Xlib call exit() wherever they are, on any thread, when the X server has gone. All that must be
/// kept is written by then; to take things down while other threads still draw would be a crash.
void endAtOnce(int status, void *)
{
    if (QCoreApplication::instance())
        ::_exit(status);
}

int runProgram(int &argc, char **argv, SingleInstance &instance, const QByteArray &folder,
               const QStringList &arguments)
{
    QApplication application(argc, argv);
    QApplication::setApplicationName(u"Quorvel"_s); // also the class of the window, by which X11 names it
    QApplication::setApplicationDisplayName(u"Quorvel"_s);
    QApplication::setDesktopFileName(u"quorvel"_s);
    QApplication::setWindowIcon(QIcon(u":/quorvel/quorvel.svg"_s));
    QApplication::setQuitOnLastWindowClosed(false);

    AppDelegate delegate(choosePlatform(folder));
    TerminationSignals signalsOfTheSystem;
    QObject::connect(&signalsOfTheSystem, &TerminationSignals::asked, &delegate, &AppDelegate::quit);
    QObject::connect(&instance, &SingleInstance::startedAgain, &delegate, &AppDelegate::openUrls);
    if (!delegate.applicationDidFinishLaunching())
        return 1;
    if (const auto listening = instance.listen(); !listening)
        qCWarning(lcMain).noquote() << listening.reason();
    if (!arguments.isEmpty())
        delegate.openUrls(arguments);
    ::on_exit(endAtOnce, nullptr);
    return QApplication::exec();
}

} // namespace

int main(int argc, char **argv)
{
    const auto arguments = argumentsOf(argc, argv);
    const auto folder = instanceFolder();
    if (!folder)
        return giveUp(argc, argv, folder.reason());
    SingleInstance instance(folder.value());
    // Before the controller is made: making it may save.
    const auto role = instance.claim(arguments);
    if (!role)
        return giveUp(argc, argv, role.reason());
    if (role.value() == SingleInstance::Role::HandedOver)
        return 0;
    const DataFolderLock lock(dataFolder());
    if (const auto taken = lock.taken(); !taken)
        return giveUp(argc, argv, taken.reason());
    return runProgram(argc, argv, instance, folder.value(), arguments);
}
