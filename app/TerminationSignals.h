#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <memory>

/// SIGTERM and SIGINT as a signal of the event loop, so that the program ends the ordinary way. A second one
/// ends it at once. One object in a program.
class TerminationSignals : public QObject
{
    Q_OBJECT

public:
    explicit TerminationSignals(QObject *parent = nullptr);
    ~TerminationSignals() override;

Q_SIGNALS:
    void asked();

private:
    std::unique_ptr<QSocketNotifier> m_notifier;
};
