#pragma once

class QCoreApplication;

/// From now on a key that is held presses once what it presses: repeated Return, Enter and Space reach only
/// what they type into. Otherwise a finger that rests on Return deletes one row after the other, or answers a
/// card wrong a dozen times. Called again for the same application it does nothing.
void pressHeldKeysOnce(QCoreApplication &application);
