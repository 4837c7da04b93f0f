#pragma once

/// Lets assistive tools meet the window's items as AccessibleItem has them, where this Qt needs it. Once.
void installAccessibleItems();
