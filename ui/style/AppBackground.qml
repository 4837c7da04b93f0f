pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// The near-black background with its purple and its green light.
BackgroundItem {}
