#pragma once

#include "ProcFiles.h"

/// Whether a process is part of the desktop session itself by its name: window managers, shells of desktops,
/// panels, compositors, buses, session managers, portals, display servers and their kind. A person does not
/// call these applications, and ending one ends the session.
bool isSessionPart(const ProcessFacts &process);
