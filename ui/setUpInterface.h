#pragma once

class QQmlEngine;

/// Makes the interface ready to be loaded: its module and icons for `engine`, its font and control style for
/// the application. Once, before the root view is loaded.
void setUpInterface(QQmlEngine &engine);
