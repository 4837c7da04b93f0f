#include "TerminationSignals.h"

#include <QLoggingCategory>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

Q_LOGGING_CATEGORY(lcSignals, "quorvel.app.signals")

namespace {

int wakeUp[2] = {-1, -1}; // read end, write end

void noteSignal(int)
{
    const char byte = 0;
    // Nothing can be done about a failure here; the second signal still ends the program.
    [[maybe_unused]] const auto written = write(wakeUp[1], &byte, 1);
}

} // namespace

TerminationSignals::TerminationSignals(QObject *parent)
    : QObject(parent)
{
    if (pipe2(wakeUp, O_CLOEXEC | O_NONBLOCK) != 0) {
        qCWarning(lcSignals) << "no pipe for signals; they end the program at once";
        return;
    }
    m_notifier = std::make_unique<QSocketNotifier>(wakeUp[0], QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] {
        m_notifier->setEnabled(false);
        Q_EMIT asked();
    });
    struct sigaction action = {};
    action.sa_handler = noteSignal;
    action.sa_flags = int(SA_RESTART | SA_RESETHAND);
    for (const int number : {SIGTERM, SIGINT})
        sigaction(number, &action, nullptr);
}

TerminationSignals::~TerminationSignals()
{
    for (const int number : {SIGTERM, SIGINT})
        std::signal(number, SIG_DFL);
    for (int &end : wakeUp) {
        if (end >= 0)
            ::close(end);
        end = -1;
    }
}
