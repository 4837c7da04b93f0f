#pragma once

#include "Result.h"

#include <QByteArray>

/// The private folder in which the running program is found: $XDG_RUNTIME_DIR/quorvel, or /tmp/quorvel-UID
/// where the session has no runtime folder. Creates it with mode 0700. A folder that is a symbolic link, has
/// another owner or is open to others is refused. In the file system's encoding.
Result<QByteArray> instanceFolder();
