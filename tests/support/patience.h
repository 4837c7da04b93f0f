#pragma once

/// How long, in milliseconds, a test waits for what takes another program a moment. Only a broken program is
/// waited for that long; what works on a machine that is slow and busy comes sooner.
constexpr int patience = 30'000;

#define TRY_COMPARE(actual, expected) QTRY_COMPARE_WITH_TIMEOUT(actual, expected, patience)
#define TRY_VERIFY(condition) QTRY_VERIFY_WITH_TIMEOUT(condition, patience)
