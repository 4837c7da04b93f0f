#pragma once

#include <QStringList>

/// Keeps, besides printing them, the warnings that name a QML file, from its making to its end. One at a
/// time.
class QmlWarnings
{
public:
    QmlWarnings();
    ~QmlWarnings();
    Q_DISABLE_COPY_MOVE(QmlWarnings)

    /// Those since the last call, oldest first.
    QStringList take();
};
