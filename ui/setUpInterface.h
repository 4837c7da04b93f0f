#pragma once

class QQmlEngine;

/// Makes the interface ready to be loaded: its module and icons for `engine`, its font, control style and
/// keys for the application. Once, before the root view is loaded.
void setUpInterface(QQmlEngine &engine);

/// Lets every window of this program draw in the way that is cheapest for this interface. Before the first
/// window is made; what the user has set in the environment stays.
void setUpDrawing();
