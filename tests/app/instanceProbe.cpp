// Claims to be the one program in the folder that the environment gives: prints "first" and what later starts
// hand over until it is ended, or "handed over", or says why it gave up.
#include "InstanceFolder.h"
#include "SingleInstance.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const auto folder = instanceFolder();
    if (!folder) {
        fprintf(stderr, "%s\n", qPrintable(folder.reason()));
        return 2;
    }
    SingleInstance instance(folder.value());
    const auto role = instance.claim(application.arguments().mid(1));
    if (!role) {
        fprintf(stderr, "%s\n", qPrintable(role.reason()));
        return 1;
    }
    if (role.value() == SingleInstance::Role::HandedOver) {
        puts("handed over");
        return 0;
    }
    QObject::connect(&instance, &SingleInstance::startedAgain, &application,
                     [](const QStringList &arguments) {
                         printf("again %s\n", qPrintable(arguments.join(QLatin1Char('|'))));
                         fflush(stdout);
                     });
    if (const auto listening = instance.listen(); !listening) {
        fprintf(stderr, "%s\n", qPrintable(listening.reason()));
        return 3;
    }
    puts("first");
    fflush(stdout);
    return QCoreApplication::exec();
}
