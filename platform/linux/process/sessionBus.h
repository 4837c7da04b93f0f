#pragma once

#include <QDBusConnection>

/// The bus of this session if one is there to connect to, else a connection that is not connected. Never
/// starts a bus.
QDBusConnection sessionBusIfThere();
